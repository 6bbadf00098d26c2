"""The icon in a panel on the session bus, which may start, end and hang at any time."""

import pytest
from bus import connect, own
from console import VERSION
from deadline import wait_until
from host import PANEL
from menu_bar import TEAL
from test_components import ALL_RUNNING
from test_tray import FLOATING, wait_until_at


def wait_until_in(host, desktop):
    """Waits until the icon is in the panel, and nowhere else; returns it."""
    item = host.icon()
    wait_until(lambda: not desktop.menu_bar.windows(), "no icon beside the panel's")
    return item


def test_the_panel_finds_the_icons_title_tool_tip_and_pictures(in_panel):
    _, host = in_panel
    item = host.icon()
    assert item.get("Id") == item.get("Title") == item.get("ToolTip")[2] == "Tandrel"
    assert item.get("Status") == "Active"
    assert item.get("IconName") == ""
    pictures = {width: data for width, _, data in item.get("IconPixmap")}
    assert sorted(pictures) == [16, 22, 24, 32, 48, 64]
    for width, data in pictures.items():
        pixels = [tuple(data[at : at + 4]) for at in range(0, len(data), 4)]  # alpha, red...
        assert len(pixels) == width**2
        assert pixels[0] == pixels[-1] == (0, 0, 0, 0)
        alpha, *colour = pixels[(width + 1) * (width // 2)]
        assert (alpha == 255 or width < 18) and all(abs(a - b) <= 4 for a, b in zip(colour, TEAL))


def test_the_exported_menu_is_complete(in_panel):
    desktop, host = in_panel
    rows = host.icon().menu()
    assert [row.title for row in rows] == [
        *[f"Tandrel {VERSION}", desktop.dashboard_address(), ""],
        *["Open Dashboard", "Copy Dashboard Address", ""],
        *["Hub   running", "Receiver   running", "Sender   running", ""],
        *["All Components", "", "", "Settings…", "Open Dashboard at Launch", "", ""],
        "Quit Tandrel",
    ]
    named = {row.title: row for row in rows if row.title}
    assert [title for title, row in named.items() if row.checked] == ["Open Dashboard at Launch"]
    assert [title for title, row in named.items() if not row.enabled] == list(named)[:2]
    states = {row.title: row.enabled for row in named["Hub   running"].rows}
    assert states == {"Start": False, "Stop": True, "Restart": True}


def test_a_click_opens_the_menu_at_the_pointer_and_the_middle_button_does_not(in_panel):
    desktop, host = in_panel
    item = host.icon()
    desktop.screen.move(300, 20)
    item.click("SecondaryActivate")
    item.click("Activate")
    menu = desktop.menu_bar.opened()
    assert (menu.rect.x, menu.rect.y) in [(300, 21), (301, 21)]
    for row in menu.rows:  # Qt 6.8 needs some movement before the first click in a run counts
        menu.point_at(row)
    menu.click("Hub")
    menu.submenu("Hub").click("Stop")
    desktop.menu_bar.wait_until_closed()
    assert item.states() == {**ALL_RUNNING, "Hub": "stopped"}


def test_the_icon_moves_into_each_panel_that_starts_and_floats_when_it_ends(running):
    for _ in range(3):
        host = running.host()
        item = wait_until_in(host, running)
        assert item.states() == ALL_RUNNING
        host.die()
        wait_until_at(running, FLOATING)
    assert running.menu_bar.states() == ALL_RUNNING


def test_each_panel_gets_a_menu_of_its_own(running):
    """Else the second one's copy would be empty where LXQt's plug-in exports it."""
    seen = set()
    for _ in range(3):
        host = running.host()
        numbers = set(wait_until_in(host, running).numbers())
        assert len(numbers) > 18 and not numbers & seen
        seen |= numbers
        host.die()
        wait_until_at(running, FLOATING)


def test_the_service_alone_is_no_panel(running):
    host = running.host(takes_icons=False)
    host.wait_until_asked(PANEL)
    wait_until_at(running, FLOATING)
    for _ in range(2):
        host.arrive()
        wait_until_in(host, running)
        host.leave()
        wait_until_at(running, FLOATING)


@pytest.mark.parametrize("name", ["org.kde.plasmashell", "org.Cinnamon"])
def test_the_icon_floats_when_a_panel_ends_whose_service_still_says_that_there_is_one(
    running, name
):
    host = running.host()
    wait_until_in(host, running)
    for _ in range(2):
        panel = connect(running.bus.address)
        own(panel, name)
        assert wait_until_in(host, running).states() == ALL_RUNNING
        panel.close_sync(None)
        wait_until_at(running, FLOATING)
        wait_until(lambda: not host.icons(), "the end of the icon on the bus")
    assert running.menu_bar.states() == ALL_RUNNING


def test_a_panel_that_hangs_does_not_keep_the_icon_from_the_screen(desktop):
    host = desktop.host(silent_at=[PANEL])
    desktop.launch(*desktop.suite.ports_options)
    host.wait_until_asked(PANEL)
    wait_until_at(desktop, FLOATING)
    assert desktop.menu_bar.states() == ALL_RUNNING
    host.answer()
    assert wait_until_in(host, desktop).states() == ALL_RUNNING
    host.die()
    wait_until_at(desktop, FLOATING)
    assert desktop.quit() == 0


def wait_until_shown(host, desktop):
    """Waits until the icon floats or, where Qt does not ask the panel itself (6.8), is in it."""
    wait_until(
        lambda: bool(host.icons()) != (list(desktop.menu_bar.windows().values()) == [FLOATING])
        and (host.asked(PANEL) > 1 or host.icons()),
        "the icon",
    )


def test_a_panel_that_goes_while_the_icon_is_made_does_not_lose_it(desktop):
    host = desktop.host(second="gone")
    desktop.launch(*desktop.suite.ports_options)
    wait_until_shown(host, desktop)
    host.leave()
    wait_until_at(desktop, FLOATING)
    host.arrive()
    wait_until_shown(host, desktop)
    host.die()
    wait_until_at(desktop, FLOATING)
    assert desktop.quit() == 0


@pytest.mark.parametrize("end", ["answers", "dies"])
def test_a_panel_that_hangs_while_the_icon_is_made_does_not_lose_it(desktop, end):
    host = desktop.host(second="silent")
    desktop.launch(*desktop.suite.ports_options)
    wait_until(lambda: host.asked(PANEL) > 1 or host.icons(), "Qt's question, or the icon")
    if end == "answers":
        host.answer()
        assert wait_until_in(host, desktop).states() == ALL_RUNNING
    host.die()
    wait_until_at(desktop, FLOATING)
    assert desktop.quit() == 0


def test_a_tray_takes_the_icon_beside_the_service_alone(desktop):
    host, tray = desktop.host(takes_icons=False), desktop.tray()
    desktop.launch(*desktop.suite.ports_options)
    desktop.menu_bar.icon()
    # Qt 6.8 does not ask for a panel and uses the bus, where nobody shows the icon.
    wait_until_at(desktop, tray.place if host.asked(PANEL) > 1 else FLOATING)
    assert desktop.menu_bar.states() == ALL_RUNNING
    assert desktop.quit() == 0


@pytest.mark.parametrize("opened", ["at the icon", "exported"])
def test_the_icon_outlives_a_panel_that_dies_while_the_menu_is_open(in_panel, opened):
    desktop, host = in_panel
    item = wait_until_in(host, desktop)
    if opened == "exported":
        item.menu()
    else:
        item.click("Activate")
        desktop.menu_bar.opened()
    host.die()
    wait_until(lambda: FLOATING in desktop.menu_bar.windows().values(), "the floating icon")
    if opened == "at the icon":
        desktop.screen.press("Escape")
        desktop.menu_bar.wait_until_closed()
    assert desktop.menu_bar.states() == ALL_RUNNING
    assert desktop.quit() == 0


def test_the_icon_outlives_a_panel_that_dies_while_it_takes_the_icon(running):
    host = running.host(silent_at=["RegisterStatusNotifierItem"])
    host.wait_until_asked("RegisterStatusNotifierItem")
    host.die()
    wait_until_at(running, FLOATING)
    wait_until_in(running.host(), running).choose("Quit")
    assert running.run.wait() == 0


def test_the_icon_stays_with_the_kind_of_panel_that_was_first(running):
    tray = running.docked()
    running.host().wait_until_asked(PANEL)
    tray.die()
    wait_until_at(running, FLOATING)
    tray = running.docked()
    tray.die()
    wait_until_at(running, FLOATING)


def test_the_icon_stays_with_the_bus_when_that_was_first(running):
    host = running.host()
    wait_until_in(host, running)
    host.die()
    wait_until_at(running, FLOATING)
    tray = running.tray()
    assert running.menu_bar.states() == ALL_RUNNING
    wait_until_at(running, FLOATING)
    host = running.host()
    wait_until_in(host, running)
    assert not tray.asked()
    host.die()
    wait_until_at(running, FLOATING)


@pytest.mark.parametrize("desktop", [{"has_bus": False}], indirect=True)
def test_without_a_bus_the_icon_is_in_the_tray(desktop):
    tray = desktop.tray()
    desktop.launch(*desktop.suite.ports_options)
    desktop.wait_until_docked(tray)
    tray.die()
    wait_until_at(desktop, FLOATING)
    desktop.screen.click(FLOATING.x + 9, FLOATING.y + 9)
    wait_until(lambda: len(desktop.menu_bar.windows()) == 2, "the menu")
    desktop.screen.press("ctrl+q")
    assert desktop.run.wait() == 0


def test_a_panel_that_was_there_first_ends_and_its_service_stays(desktop):
    host, panel = desktop.host(), connect(desktop.bus.address)
    own(panel, "org.kde.plasmashell")
    desktop.launch(*desktop.suite.ports_options)
    wait_until_in(host, desktop)
    panel.close_sync(None)
    wait_until_at(desktop, FLOATING)
    assert desktop.menu_bar.states() == ALL_RUNNING
    assert desktop.quit() == 0
