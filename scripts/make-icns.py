#!/usr/bin/env python3
"""Packs square PNG icons into a macOS .icns file.

    scripts/make-icns.py OUT.icns PNG...

An .icns file is the tag "icns" and the file's length, then one entry per image: a four-letter
type, the entry's length (8 + the data) and the PNG itself, lengths as 32-bit big-endian. The
type says the image's size in points and scale, so a 256 px image is stored twice: as 256 pt at
1x (ic08) and as 128 pt at 2x (ic13). Entries are written in the order of the table below, not
of the arguments, so the same PNGs always give the same file.

Sysmend's icon is kept as resources/macos/Sysmend.icns, made from the PNGs rendered from
resources/icons/sysmend.svg:

    scripts/make-icns.py resources/macos/Sysmend.icns resources/icons/sysmend-*.png
"""

import struct
import sys

# (type, pixel size), in the order they are written.
ENTRY_TYPES = [
    ("ic07", 128),   # 128 pt
    ("ic08", 256),   # 256 pt
    ("ic13", 256),   # 128 pt @2x
    ("ic09", 512),   # 512 pt
    ("ic14", 512),   # 256 pt @2x
    ("ic10", 1024),  # 512 pt @2x
]

PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def png_size(data, name):
    """Width and height from the IHDR chunk, which must come first."""
    if len(data) < 24 or data[:8] != PNG_SIGNATURE or data[12:16] != b"IHDR":
        raise ValueError(f"{name}: not a PNG file")
    return struct.unpack(">II", data[16:24])


def pack(pngs):
    """pngs: {pixel size: PNG bytes}. Returns the .icns bytes."""
    body = b""
    for kind, size in ENTRY_TYPES:
        if size in pngs:
            body += kind.encode("ascii") + struct.pack(">I", 8 + len(pngs[size])) + pngs[size]
    return b"icns" + struct.pack(">I", 8 + len(body)) + body


def main(argv):
    if len(argv) < 3:
        sys.stderr.write("usage: make-icns.py OUT.icns PNG...\n")
        return 2
    pngs = {}
    try:
        for name in argv[2:]:
            with open(name, "rb") as f:
                data = f.read()
            width, height = png_size(data, name)
            if width != height:
                raise ValueError(f"{name}: {width}x{height} is not square")
            if width not in {size for _, size in ENTRY_TYPES}:
                raise ValueError(f"{name}: an .icns file holds no {width} px image")
            if width in pngs:
                raise ValueError(f"{name}: a second {width} px image")
            pngs[width] = data
        icns = pack(pngs)
    except (OSError, ValueError) as error:
        sys.stderr.write(f"make-icns.py: {error}\n")
        return 1
    with open(argv[1], "wb") as f:
        f.write(icns)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
