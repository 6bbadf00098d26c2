"""The saved preference."""

import json

from deadline import wait_until


def saved(running):
    settings = running.suite.settings
    return json.loads(settings.read_text()) if settings.exists() else None


def test_the_preference_is_switched_and_saved(running):
    for expected in (False, True):
        menu = running.menu_bar.open()
        assert menu.checked("at launch") is not expected
        menu.click("at launch")
        running.menu_bar.wait_until_closed(menu)
        wait_until(lambda: (saved(running) or {}).get("open_browser") is expected, "the file")
    assert saved(running) == {
        "http_port": running.suite.http,
        "udp_port": running.suite.udp,
        "open_browser": True,
    }
