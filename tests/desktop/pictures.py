"""Makes pictures of the running interface on a private screen.

    pictures.py FOLDER                 menu.png, ports.png, warning.png and, in dark colours,
                                       submenu.png in FOLDER
    pictures.py FILE.png ARGUMENTS...  the open menu of a launcher with these arguments; when that
                                       ends at once, no picture, but its output and its status
"""

import socket
import sys
import time
from pathlib import Path

from deadline import wait_until
from desktop import Desktop
from dialogs import Dialog, PortsDialog
from preload import preloaded
from screen import SIZE, Rect

BACKGROUND = 0x3B5268
MARGIN = 10
TITLE_BAR = 20  # the window manager's
# The pictures must not differ from one run, or one machine, to another.
DEFAULT_PORTS = (4466, 4465)
TAKEN_PORT = 4470
ADDRESS = "192.168.1.20"
# What KDE keeps of the user's colours; every toolkit's own way to be dark is another.
DARK = """
[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
ForegroundInactive=161,169,177
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
ForegroundInactive=161,169,177
[Colors:View]
BackgroundNormal=27,30,32
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=61,120,160
ForegroundNormal=252,252,252
"""
STILL = 0.5  # seconds without a change after which a picture is taken


def around(*rects, above=0):
    """The part of the screen with the given rectangles and a margin."""
    left = max(0, min(rect.x for rect in rects) - MARGIN)
    top = max(0, min(rect.y for rect in rects) - above - MARGIN)
    right = min(SIZE[0], max(rect.x + rect.width for rect in rects) + MARGIN)
    bottom = min(SIZE[1], max(rect.y + rect.height for rect in rects) + MARGIN)
    return Rect(left, top, right - left, bottom - top)


def save(desktop, path, rect):
    """Takes the picture once the rectangle no longer changes."""
    seen, since = desktop.screen.image(rect), time.monotonic()

    def still():
        nonlocal seen, since
        image = desktop.screen.image(rect)
        if image != seen:
            seen, since = image, time.monotonic()
        return time.monotonic() - since > STILL

    wait_until(still, "a screen that does not change")
    desktop.screen.save(path, rect)


def take_menu(desktop, path):
    menu = desktop.menu_bar.open()
    save(desktop, path, around(menu.rect, desktop.menu_bar.icon_window()))
    desktop.menu_bar.dismiss()


def take_submenu(desktop, path):
    menu = desktop.menu_bar.open()
    menu.click("Receiver")
    submenu = menu.submenu("Receiver")
    submenu.point_at("Restart")
    save(desktop, path, around(menu.rect, submenu.rect, desktop.menu_bar.icon_window()))
    desktop.menu_bar.dismiss()


def take_dialogs(desktop, ports, warning):
    with socket.create_server(("", TAKEN_PORT)):
        dialog = PortsDialog(desktop)
        save(desktop, ports, around(dialog.rect, above=TITLE_BAR))
        dialog.apply(TAKEN_PORT, desktop.suite.udp)
        refusal = Dialog(desktop, "Could not change the ports")
        save(desktop, warning, around(refusal.rect, above=TITLE_BAR))
        refusal.answer("Return")


def prefer_dark(desktop):
    """Has launchers that are started later take the colours of a desktop with a dark scheme."""
    folder = desktop.suite.home / ".config"
    folder.mkdir(exist_ok=True)
    (folder / "kdeglobals").write_text(DARK)
    desktop.change({"XDG_CURRENT_DESKTOP": "KDE", "KDE_SESSION_VERSION": "5"})


def take_all(desktop, folder):
    """Returns the launcher's exit status."""
    folder.mkdir(parents=True, exist_ok=True)
    desktop.suite.http, desktop.suite.udp = DEFAULT_PORTS
    desktop.change(preloaded(desktop.suite.folder, TD_ADDRESS=ADDRESS))
    desktop.start()
    take_menu(desktop, folder / "menu.png")
    take_dialogs(desktop, folder / "ports.png", folder / "warning.png")
    status = desktop.quit()
    prefer_dark(desktop)
    desktop.start()
    take_submenu(desktop, folder / "submenu.png")
    return status or desktop.quit()


def take_one(desktop, path, arguments):
    """Returns the launcher's exit status."""
    run = desktop.launch(*arguments)
    wait_until(
        lambda: run.process.poll() is not None or desktop.menu_bar.drawn_icon(),
        "the icon or the launcher's end",
    )
    if run.process.poll() is None:
        menu = desktop.menu_bar.open()
        save(desktop, path, around(menu.rect, desktop.menu_bar.icon_window()))
        desktop.screen.press("ctrl+q")
    status = run.wait()
    sys.stdout.buffer.write(run.output)
    sys.stderr.buffer.write(run.errors)
    return status


def main():
    target = Path(sys.argv[1])
    desktop = Desktop()
    try:
        desktop.screen.paint(BACKGROUND)
        if target.suffix == ".png":
            return take_one(desktop, target, sys.argv[2:])
        return take_all(desktop, target)
    finally:
        desktop.close()


sys.exit(main())
