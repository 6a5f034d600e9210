#!/usr/bin/env bash
# Installs what is missing, builds Tolmara and starts it.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    echo "tolmara: no display to show the window on (run it under Xvfb: see README.md)" >&2
    exit 1
fi
scripts/setup-debian.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTOLMARA_TESTS=OFF >/dev/null
cmake --build build -j"$(nproc)" --target tolmara
exec build/tolmara "$@"
