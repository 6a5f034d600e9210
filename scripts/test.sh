#!/usr/bin/env bash
# Installs what is missing, builds Tolmara with AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs every test under the offscreen platform.
# First every source is type-checked for Windows.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup-debian.sh
scripts/check-windows.sh
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DTOLMARA_SANITIZE=ON -DTOLMARA_TESTS=ON >/dev/null
cmake --build build-asan -j"$(nproc)"
export QT_QPA_PLATFORM=offscreen
cd build-asan
ctest --output-on-failure "$@"
