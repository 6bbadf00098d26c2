"""Signal actions and masks that a program is started with."""

import signal
import sys

# Becomes the program that its third argument names, with the signals in the first one ignored, those
# in the second one blocked, and the default action and no block for all others.
_BECOME = """
import os, signal, sys
ignored, blocked = ([signal.Signals[name] for name in names.split()] for names in sys.argv[1:3])
for number in signal.valid_signals() - {signal.SIGKILL, signal.SIGSTOP}:
    signal.signal(number, signal.SIG_IGN if number in ignored else signal.SIG_DFL)
signal.pthread_sigmask(signal.SIG_SETMASK, blocked)
os.execv(sys.argv[3], sys.argv[3:])
"""


def start_with_signals(suite, *arguments, ignored=(), blocked=(), **options):
    """Starts the launcher with these signals ignored or blocked, and no others; see `Run`."""
    signals = [" ".join(signal.Signals(number).name for number in set_) for set_ in (ignored, blocked)]
    command = ["-IS", "-c", _BECOME, *signals, suite.launcher, *arguments]
    return suite.start(*command, program=sys.executable, **options)


def handle_ignored():
    """Keeps what the tests start from ignoring what the test runner was started to ignore.

    It may have been started by nohup or in the background. A handler becomes the default action in
    a started program; "ignored" would stay.
    """
    for number in signal.valid_signals():
        if signal.getsignal(number) == signal.SIG_IGN:
            signal.signal(number, lambda *_: None)
