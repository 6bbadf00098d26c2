#!/usr/bin/env python3
"""Draws the icon in the folders and sizes in which Linux desktops look for it.

    hicolor.py gui/launcher_mac_gui.mm FOLDER SIZE...
"""

import sys
from pathlib import Path

from drawing import draw, png, read_bars, svg


def write(folder, size, name, data):
    path = folder / size / "apps" / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data)


def main():
    source, folder, *sizes = sys.argv[1:]
    bars, colour = read_bars(source)
    theme = Path(folder, "hicolor")
    write(theme, "scalable", "tandrel.svg", svg(bars, colour).encode())
    for size in map(int, sizes):
        write(theme, f"{size}x{size}", "tandrel.png", png(draw(bars, colour, size), size))


if __name__ == "__main__":
    main()
