"""A menu that is higher than the monitor: all of it can be reached."""

import pytest
from deadline import wait_until
from menu_bar import LARGEST_ICON, TEXT, TOP
from monitors import lies_in, start_with_icon_at
from screen import Rect

LOW, REST = Rect(0, 0, 1024, 200), Rect(0, 200, 1024, 568)
HEADER, LAST = "Tandrel 1.4.4+412", "Quit Tandrel"
HIGHLIGHT = (204, 224, 250)
WHEEL_UP, WHEEL_DOWN = 4, 5
STRIP = 18  # the height of what covers an end


@pytest.fixture
def low(desktop):
    """A desktop with the icon on a low monitor; Quit must end what a test leaves running."""
    start_with_icon_at(desktop, 300, "top", [LOW, REST])
    yield desktop
    assert desktop.run.wait() == 0


@pytest.fixture
def menu(low):
    """The open menu's rectangle."""
    rect = low.menu_bar.open_window()
    assert rect.height == LOW.height and lies_in(rect, LOW)
    assert HEADER in low.screen.words(rect) and LAST not in low.screen.words(rect)
    return rect


def middle_of_last_row(menu):
    return menu.x + 60, menu.y + menu.height - TOP - TEXT // 2


def wait_for_words(desktop, rect, words):
    wait_until(lambda: words in desktop.screen.words(rect), f"{words!r} in the menu")


def other_window(desktop, menu):
    shown = [rect for rect in desktop.menu_bar.windows().values() if rect.width > LARGEST_ICON]
    return next((rect for rect in shown if rect != menu), None)


def test_the_wheel_scrolls_it(low, menu):
    low.screen.move(menu.x + 60, menu.y + 100)
    low.screen.turn_wheel(WHEEL_DOWN, 20)
    wait_for_words(low, menu, LAST)
    low.screen.turn_wheel(WHEEL_UP, 20)
    wait_for_words(low, menu, HEADER)
    low.screen.turn_wheel(WHEEL_DOWN, 20)
    wait_for_words(low, menu, LAST)
    low.screen.click(*middle_of_last_row(menu))


def test_the_keyboard_scrolls_it(low, menu):
    low.screen.press("Up")  # the last item
    wait_for_words(low, menu, LAST)
    low.screen.press("Down")  # the first one that can be chosen
    wait_for_words(low, menu, "Open Dashboard")
    low.screen.press("Up", "Return")


def test_the_pointer_at_an_end_scrolls_it(low, menu):
    low.screen.move(menu.x + 60, menu.y + menu.height - 2)
    wait_for_words(low, menu, LAST)
    low.screen.move(menu.x + 60, menu.y + 2)
    wait_for_words(low, menu, HEADER)
    low.screen.move(menu.x + 60, menu.y + menu.height - 2)
    wait_for_words(low, menu, LAST)
    low.screen.click(*middle_of_last_row(menu))


def test_a_submenu_is_beside_its_row_wherever_that_has_scrolled_to(low, menu):
    low.screen.press("Up", "Up", "Up", "Up")  # Quit, at Launch, Settings, All Components
    wait_for_words(low, menu, "All Components")
    low.screen.press("Right")
    submenu = wait_until(lambda: other_window(low, menu), "the submenu")
    wait_for_words(low, submenu, "Start All")
    assert lies_in(submenu, LOW)
    highlighted = low.screen.image(menu).where(lambda pixel: max(abs(a - b) for a, b in zip(pixel, HIGHLIGHT)) < 2)
    assert abs(menu.y + highlighted[0][1] - (submenu.y + TOP)) <= 1
    low.screen.press("Left", "Up", "alt+q")


def test_a_submenu_moves_with_its_row(desktop):
    low = Rect(0, 0, 1024, 222)
    start_with_icon_at(desktop, 300, "top", [low, Rect(0, 222, 1024, 546)])
    menu = desktop.menu_bar.open_window()
    pointer = menu.x + 60, menu.y + 50
    desktop.screen.move(*pointer)
    desktop.screen.turn_wheel(WHEEL_DOWN, 2)
    submenu = wait_until(lambda: other_window(desktop, menu), "the submenu of the row there")
    desktop.screen.turn_wheel(WHEEL_DOWN, 1)  # less than a row is left
    moved = submenu._replace(y=submenu.y - 10)
    wait_until(lambda: other_window(desktop, menu) == moved, "the submenu beside its row")
    desktop.screen.press("alt+q")
    assert desktop.run.wait() == 0


def test_the_strip_at_an_end_chooses_nothing(low, menu):
    low.screen.move(menu.x + 60, menu.y + 100)
    low.screen.turn_wheel(WHEEL_DOWN, 1)
    wait_for_words(low, menu, "All Components")
    low.screen.click(menu.x + 60, menu.y + 16)  # Open Dashboard is below the strip
    wait_for_words(low, menu, HEADER)
    low.screen.press("Up", "Return")


def test_a_key_ends_scrolling_by_the_pointer(low, menu):
    low.screen.move(menu.x + 60, menu.y + menu.height - 2)
    low.screen.press("Down", "Down", "Down", "Up", "Down", "Up", "Up")
    wait_for_words(low, menu, "Open Dashboard")
    low.suite.forget_calls("open")
    low.screen.press("Return")
    address = low.dashboard_address().encode()
    wait_until(lambda: low.suite.calls("open") == [[address]], "the dashboard to be opened")
    low.menu_bar.open_window()
    low.screen.press("alt+q")


def test_a_strip_with_an_arrow_covers_an_end_with_more_beyond(low, menu):
    strip = Rect(menu.x + 1, menu.y + menu.height - STRIP, menu.width - 2, STRIP - 1)
    dark = low.screen.image(strip).where(lambda pixel: max(pixel) < 100)
    assert dark and all(abs(x - strip.width / 2) <= 6 for x, _ in dark)
    low.screen.press("alt+q")
