"""Starts programs with certain signal actions and masks."""

import signal
import sys

# Executes the program in the third argument, with the signals in the first argument ignored and those in the
# second blocked; all others are at their default and unblocked.
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
    """Gives signals that the test runner ignores a handler, so that what the tests start has the default.

    A runner that was started by nohup or in the background ignores signals, and programs inherit that. A
    handler is not inherited.
    """
    for number in signal.valid_signals():
        if signal.getsignal(number) == signal.SIG_IGN:
            signal.signal(number, lambda *_: None)
