#!/usr/bin/env bash
# Builds the Debian package tolmara_<version>_<arch>.deb: a release build in
# build-deb/ (or the folder given), then CPack's DEB generator. Prints the
# package's path last.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup-debian.sh
build=${1:-build-deb}
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DTOLMARA_TESTS=OFF \
      -DCMAKE_SKIP_INSTALL_ALL_DEPENDENCY=ON "${launcher[@]}" >/dev/null
cmake --build "$build" -j"$(nproc)" --target tolmara
rm -f "$build"/tolmara_*.deb
(cd "$build" && cpack -G DEB >/dev/null)
readlink -f "$build"/tolmara_*.deb
