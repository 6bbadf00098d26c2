"""The settings that a run uses: its ports, and whether it opens the browser."""

import console
import scripted_hub
from component_events import starts


def settings_text(http, udp, open_browser):
    """A settings file as the launcher writes it."""
    value = "true" if open_browser else "false"
    return f'{{\n  "http_port": {http},\n  "udp_port": {udp},\n  "open_browser": {value}\n}}\n'


def settings_of_run(suite, *arguments):
    """The settings of a run with the stand-in hub, whose ports must be free.

    The dashboard port and the control port, both as text, and whether the browser is opened.
    """
    suite.set_behaviour("hub", "record=events.jsonl")
    run = suite.start("--no-receiver", "--no-sender", *arguments)
    run.wait_for(console.READY)
    assert run.stop() == 0  # once the browser tool has ended, too
    run.close()
    suite.runs.remove(run)
    opened = bool(suite.calls("open"))
    suite.forget_calls("open")
    udp_option, udp, http_option, http = starts(suite, "hub")[-1]["argv"][1:]
    assert (udp_option, http_option) == ("--udp-port", "--http-port")
    return http, udp, opened


def settings_without_options(suite):
    """The settings of a run without options, whose ports may be in use.

    The ports are those of a run with a hub that listens nowhere and exits. Another run, with free
    ports as options, shows whether the browser is opened.
    """
    opened = settings_of_run(suite, *suite.ports_options)[2]
    scripted_hub.make_failing(suite)
    return (*scripted_hub.ports_of_failing_run(suite), opened)
