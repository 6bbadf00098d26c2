"""The icon, the states in the menu, and Quit."""

ALL_UP = {"header": "green", "hub": "green", "receiver": "green", "sender": "green"}


def test_the_menu_shows_every_component_running(running):
    assert running.menu_bar.states() == ALL_UP


def test_the_menu_shows_which_component_has_stopped(running):
    running.menu_bar.choose("receiver", "stop")
    assert running.menu_bar.states() == {**ALL_UP, "header": "orange", "receiver": "red"}


def test_a_component_that_has_been_given_up_shows_as_stopped(desktop):
    desktop.suite.behave("sender", "exit-at-once")
    desktop.start()
    desktop.run.wait_for("Tandrel: the sender keeps exiting; leaving it stopped.", "errors")
    assert desktop.menu_bar.states() == {**ALL_UP, "header": "orange", "sender": "red"}
    assert desktop.quit() == 0


def test_quit_stops_everything_in_order(running):
    assert running.quit() == 0
    stops = [event["program"] for event in running.suite.events("stop")]
    assert stops == ["td_sender", "td_receiver", "td_hub"]
    assert running.run.output.count(b"Tandrel: stopping...") == 1
    assert running.run.output.endswith(b"\nTandrel: stopping...\nTandrel: stopped.\n")
    assert not running.suite.processes()
