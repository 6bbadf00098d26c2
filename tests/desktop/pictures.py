"""Makes pictures of the running interface on a private screen.

    pictures.py FOLDER                 menu.png, submenu.png, ports.png and warning.png in FOLDER
    pictures.py FILE.png ARGUMENTS...  the open menu of a launcher with these arguments; when that
                                       ends at once, no picture, but its output and its status
"""

import socket
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[1] / "system"))

from deadline import wait_until  # noqa: E402
from desktop import Desktop  # noqa: E402
from dialogs import Dialog, PortsDialog  # noqa: E402
from preload import preloaded  # noqa: E402
from screen import SIZE, Rect  # noqa: E402

BACKGROUND = 0x3B5268
MARGIN = 10
TITLE_BAR = 20  # the window manager's
# The pictures must not differ from one run, or one machine, to another.
DEFAULT_PORTS = (4466, 4465)
TAKEN_PORT = 4470
ADDRESS = "192.168.1.20"
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


def picture_menu(desktop, path):
    menu = desktop.menu_bar.open()
    save(desktop, path, around(menu.rect, desktop.menu_bar.icon_window()))
    return menu


def picture_submenu(desktop, menu, path):
    submenu = desktop.menu_bar.submenu(menu, "receiver")
    save(desktop, path, around(menu.rect, submenu.rect, desktop.menu_bar.icon_window()))
    desktop.menu_bar.dismiss(menu)


def picture_dialogs(desktop, ports, warning):
    with socket.create_server(("", TAKEN_PORT)):
        dialog = PortsDialog(desktop.menu_bar)
        save(desktop, ports, around(dialog.rect, above=TITLE_BAR))
        dialog.apply(TAKEN_PORT, desktop.suite.udp)
        refusal = Dialog(desktop.menu_bar, "Could not change the ports")
        save(desktop, warning, around(refusal.rect, above=TITLE_BAR))
        refusal.answer("Return")


def make_all(desktop, folder):
    desktop.suite.http, desktop.suite.udp = DEFAULT_PORTS
    desktop.change(preloaded(desktop.suite.folder, TD_ADDRESS=ADDRESS))
    desktop.start()
    folder.mkdir(parents=True, exist_ok=True)
    menu = picture_menu(desktop, folder / "menu.png")
    picture_submenu(desktop, menu, folder / "submenu.png")
    picture_dialogs(desktop, folder / "ports.png", folder / "warning.png")
    return desktop.quit()


def make_one(desktop, path, arguments):
    """Returns the launcher's exit status."""
    run = desktop.launch(*arguments)
    wait_until(
        lambda: run.process.poll() is not None or desktop.menu_bar.drawn_icon(),
        "the icon or the launcher's end",
    )
    if run.process.poll() is None:
        menu = desktop.menu_bar.open_window()
        save(desktop, path, around(menu, desktop.menu_bar.icon_window()))
        desktop.screen.press("alt+q")
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
            return make_one(desktop, target, sys.argv[2:])
        return make_all(desktop, target)
    finally:
        desktop.close()


sys.exit(main())
