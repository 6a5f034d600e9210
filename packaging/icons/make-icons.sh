#!/usr/bin/env bash
# Renders tolmara.svg into the PNG sizes the windows and the desktop use, and
# packs them into tolmara.ico for Windows. Run it after changing the SVG and
# commit what it writes (needs rsvg-convert from librsvg2-bin, and python3).
set -euo pipefail
cd "$(dirname "$0")"
sizes=(16 32 48 256)
for size in "${sizes[@]}"; do
    rsvg-convert -w "$size" -h "$size" tolmara.svg -o "tolmara-$size.png"
done
python3 - "${sizes[@]}" <<'PY'
import struct, sys
sizes = [int(s) for s in sys.argv[1:]]
images = [open(f"tolmara-{s}.png", "rb").read() for s in sizes]
out = struct.pack("<HHH", 0, 1, len(images))
offset = 6 + 16 * len(images)
for size, data in zip(sizes, images):
    side = size % 256  # 0 stands for 256
    out += struct.pack("<BBBBHHII", side, side, 0, 0, 1, 32, len(data), offset)
    offset += len(data)
open("../windows/tolmara.ico", "wb").write(out + b"".join(images))
PY
