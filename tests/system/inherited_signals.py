"""Signals that the test runner was started to ignore, as by nohup or in the background."""

import signal


def handle_ignored():
    """Keeps what the tests start from ignoring them, too.

    A handler becomes the default action in a started program; "ignored" would stay.
    """
    for number in signal.valid_signals():
        if signal.getsignal(number) == signal.SIG_IGN:
            signal.signal(number, lambda *_: None)
