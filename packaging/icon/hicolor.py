#!/usr/bin/env python3
"""Draws the icon in the folders and sizes in which Linux desktops look for it.

    hicolor.py FOLDER SIZE...
"""

import sys
from pathlib import Path

from drawing import draw, png, svg


def write(folder, size, name, data):
    path = folder / size / "apps" / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data)


def main():
    folder, *sizes = sys.argv[1:]
    theme = Path(folder, "hicolor")
    write(theme, "scalable", "tandrel.svg", svg().encode())
    for size in map(int, sizes):
        write(theme, f"{size}x{size}", "tandrel.png", png(draw(size), size))


if __name__ == "__main__":
    main()
