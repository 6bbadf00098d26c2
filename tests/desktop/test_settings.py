"""The saved preference."""

from deadline import wait_until


def test_the_preference_is_switched_and_saved(running):
    for expected in (False, True):
        menu = running.menu_bar.open()
        assert menu.checked("at launch") is not expected
        menu.click("at launch")
        running.menu_bar.wait_until_closed(menu)
        wait_until(lambda: running.saved_settings().get("open_browser") is expected, "the file")
    assert running.saved_settings() == {
        "http_port": running.suite.http,
        "udp_port": running.suite.udp,
        "open_browser": True,
    }
