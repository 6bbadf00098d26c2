"""A screen divided into monitors, with the launcher's icon on one of them."""

from deadline import wait_until
from screen import SIZE


def lies_in(rect, outer):
    return (
        outer.x <= rect.x
        and outer.y <= rect.y
        and rect.x + rect.width <= outer.x + outer.width
        and rect.y + rect.height <= outer.y + outer.height
    )


def start_with_icon_at(desktop, x, edge, monitors, primary=0):
    """Starts the launcher with its icon in a tray at an edge of the screen, `x` from the left.

    The screen is divided when the tray has its place, for which it would choose a monitor.
    """
    desktop.screen.program(
        *["trayer", "--edge", edge, "--align", "left", "--margin", str(x), "--SetDockType", "true"],
        *["--widthtype", "request"],
    )
    wait_until(lambda: desktop.screen.owner("_NET_SYSTEM_TRAY_S0"), "the tray")
    desktop.screen.split(*monitors, primary=primary)
    desktop.start()
    icon = desktop.menu_bar.icon()
    assert abs(icon.x - x) < 20 and (icon.y > SIZE[1] / 2) == (edge == "bottom")
    return icon
