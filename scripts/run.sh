#!/usr/bin/env bash
# Installs what is missing, builds Tolmara and starts it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup-debian.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTOLMARA_TESTS=OFF >/dev/null
cmake --build build -j"$(nproc)" --target tolmara
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    echo "tolmara: built, but there is no display to show it on (run it under Xvfb: see README.md)" >&2
    exit 1
fi
exec build/tolmara "$@"
