"""The icon in a desktop's tray."""

from components import COMPONENTS
from deadline import wait_until


def test_the_icon_docks_in_the_tray(desktop):
    desktop.suite.record(*COMPONENTS)
    desktop.screen.program("trayer", "--edge", "bottom", "--SetDockType", "true", "--width", "10")
    wait_until(lambda: desktop.screen.owner("_NET_SYSTEM_TRAY_S0"), "the tray")
    desktop.start()
    icon = desktop.menu_bar.icon()
    assert icon.y > 700  # in the tray, which is at the bottom
    assert set(desktop.menu_bar.states().values()) == {"green"}
    assert desktop.quit() == 0
