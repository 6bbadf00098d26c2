"""How the dialogs behave and look on a desktop."""

import pytest
from deadline import wait_until
from dialogs import Dialog, PortsDialog
from screen import Rect

COVER = 0x806040
WARNING = "Could not change the ports"


def open_dialog(desktop, kind):
    """Opens the ports dialog, or has it refused, which opens the warning."""
    dialog = PortsDialog(desktop.menu_bar)
    if kind == "ports":
        return dialog
    dialog.apply(80, desktop.suite.udp)
    return Dialog(desktop.menu_bar, WARNING)


def close_by_keys(dialog):
    dialog.answer("alt+F4")


def close_by_title_bar(dialog):
    dialog.close_by_title_bar()


def close_by_escape(dialog):
    dialog.answer("Escape")


CLOSINGS = [close_by_keys, close_by_title_bar, close_by_escape]


def check_nothing_changed(running, before):
    assert set(running.menu_bar.states().values()) == {"green"}
    assert running.pids() == before
    assert not running.suite.settings.exists()


@pytest.mark.parametrize("close", CLOSINGS)
def test_closing_the_ports_dialog_is_cancel(running, close):
    before = running.pids()
    dialog = PortsDialog(running.menu_bar)
    dialog.enter(0, running.suite.ports.free())
    close(dialog)
    check_nothing_changed(running, before)


@pytest.mark.parametrize("close", CLOSINGS)
def test_closing_a_warning_is_ok(running, close):
    before = running.pids()
    close(open_dialog(running, "warning"))
    check_nothing_changed(running, before)


@pytest.mark.parametrize("desktop", [True, False], indirect=True)
@pytest.mark.parametrize("key", ["Escape", "Return"])
def test_keys_work_as_soon_as_they_go_to_the_dialog(running, key):
    running.screen.cover(Rect(100, 500, 200, 150), COVER)
    for _ in range(3):
        icon = running.menu_bar.icon_window()
        running.menu_bar.choose("settings")
        window = wait_until(
            lambda: [w for w, r in running.menu_bar.windows().items() if r != icon], "the dialog"
        )[0]
        wait_until(lambda: running.screen.has_focus(window), "the focus")
        running.screen.tap(key)
        wait_until(lambda: window not in running.menu_bar.windows(), "the dialog to close")


@pytest.mark.parametrize("kind, title", [("ports", "Tandrel Settings"), ("warning", WARNING)])
def test_a_dialog_is_one_to_the_window_manager(running, kind, title):
    screen, dialog = running.screen, open_dialog(running, kind)
    assert dialog.title() == title
    assert list(screen.property(dialog.window, "_NET_WM_WINDOW_TYPE")) == [
        screen.atom("_NET_WM_WINDOW_TYPE_DIALOG")
    ]
    assert screen.atom("WM_DELETE_WINDOW") in screen.property(dialog.window, "WM_PROTOCOLS")
    # For the root window, which stands for the application's windows: above all of them.
    assert len(screen.property(dialog.window, "WM_TRANSIENT_FOR")) == 1
    flags, functions = screen.property(dialog.window, "_MOTIF_WM_HINTS")[:2]
    assert flags & 1 and not functions & (1 | 2 | 8 | 16)  # all, resize, minimise, maximise
    dialog.answer("Escape")


def test_the_title_bar_shows_the_icon(running):
    dialog = PortsDialog(running.menu_bar)
    title_bar = Rect(dialog.rect.x, dialog.rect.y - 19, 20, 18)
    teal = running.screen.image(title_bar).where(
        lambda pixel: pixel[1] > pixel[0] + 60 and pixel[2] > pixel[0] + 60
    )
    assert len(teal) > 8
    side, *_ = running.screen.property(dialog.window, "_NET_WM_ICON")
    pixels = running.screen.property(dialog.window, "_NET_WM_ICON")[2 : 2 + side * side]
    assert pixels[0] >> 24 < 64 and pixels[side * side // 2] >> 24 == 255  # a round corner
    dialog.answer("Escape")


def test_a_dialog_does_not_stay_minimised(running):
    dialog = PortsDialog(running.menu_bar)
    running.screen.minimise(dialog.window)
    wait_until(lambda: dialog.window in running.menu_bar.windows(), "the dialog")
    wait_until(lambda: running.screen.active_window() == dialog.window, "the focus")
    dialog.answer("Escape")


@pytest.mark.parametrize("kind", ["ports", "warning"])
def test_a_click_on_the_icon_raises_the_dialog(running, kind):
    screen, dialog = running.screen, open_dialog(running, kind)
    screen.cover(dialog.rect, COVER)
    middle = Rect(dialog.rect.x + dialog.rect.width // 2, dialog.rect.y + 30, 1, 1)
    assert screen.image(middle).pixel(0, 0) == (0x80, 0x60, 0x40)
    icon = running.menu_bar.icon()
    screen.click(icon.x + icon.width // 2, icon.y + icon.height // 2)
    wait_until(lambda: min(screen.image(middle).pixel(0, 0)) > 240, "the dialog")
    wait_until(lambda: screen.active_window() == dialog.window, "the focus")
    dialog.answer("Escape")


@pytest.mark.parametrize("desktop", [False], indirect=True)
def test_a_click_on_the_icon_raises_the_dialog_without_a_window_manager(running):
    screen, icon = running.screen, running.menu_bar.icon_window()
    running.menu_bar.choose("settings")
    window, rect = wait_until(
        lambda: [item for item in running.menu_bar.windows().items() if item[1] != icon],
        "the dialog",
    )[0]
    screen.cover(rect, COVER)
    screen.click(icon.x + icon.width // 2, icon.y + icon.height // 2)
    middle = Rect(rect.x + rect.width // 2, rect.y + 30, 1, 1)
    wait_until(lambda: min(screen.image(middle).pixel(0, 0)) > 240, "the dialog")
    wait_until(lambda: screen.has_focus(window), "the focus")
    screen.tap("Escape")
    wait_until(lambda: window not in running.menu_bar.windows(), "the dialog to close")


def test_labels_have_the_size_and_the_baseline_of_the_fields(running):
    dialog = PortsDialog(running.menu_bar)
    for field in (0, 1):
        label_rows = {y for _, y in dialog.label_ink(field)}
        port_rows = {y for _, y in dialog.ink(field)}
        assert max(label_rows) == max(port_rows)
        # A capital letter is as high as a digit; smoothing may make one row of it paler.
        assert abs(min(label_rows) - min(port_rows)) <= 1
    dialog.answer("Escape")


def test_buttons_are_flat(running):
    dialog = PortsDialog(running.menu_bar)
    for number in (0, 1):
        image = running.screen.image(dialog.button(number))
        _, _, width, height = image.rect
        edges = [(0, height // 2), (width - 1, height // 2), (width // 3, 0)]
        edges.append((width // 3, height - 1))
        assert len({image.pixel(*place) for place in edges}) == 1, "edges of one colour"
        inside = {image.pixel(x, y) for x in (4, width - 5) for y in (4, height - 5)}
        assert len(inside) == 1 and inside.isdisjoint({image.pixel(0, height // 2)})
    dialog.answer("Escape")


def test_tab_goes_through_the_fields_and_the_buttons(running):
    dialog = PortsDialog(running.menu_bar)
    assert dialog.focused() == {}
    for key, place in [
        ("Tab", "field 0"),
        ("Tab", "field 1"),
        ("Tab", "button 1"),
        ("Tab", "button 0"),
        ("Tab", "field 0"),
        ("shift+Tab", "button 0"),
        ("shift+Tab", "button 1"),
    ]:
        running.screen.press(key)
        wait_until(lambda at=place: dialog.focused() == {at: 3}, f"the focus at {place}")
    dialog.answer("space")
