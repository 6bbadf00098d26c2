"""A clipboard manager for the display that the environment names.

    clipboard_manager.py           saves the clipboard when asked, and has it once its owner is gone
    clipboard_manager.py silent    never answers
"""

import sys

from Xlib import X, Xatom, display
from Xlib.protocol import event


class Manager:
    def __init__(self, silent):
        self._display = display.Display()
        self._silent = silent
        self._window = self._display.screen().root.create_window(
            0, 0, 1, 1, 0, X.CopyFromParent, event_mask=X.PropertyChangeMask
        )
        self._saved = None
        self._window.set_selection_owner(self._atom("CLIPBOARD_MANAGER"), X.CurrentTime)

    def _atom(self, name):
        return self._display.intern_atom(name)

    def run(self):
        while True:
            seen = self._display.next_event()
            if seen.type == X.SelectionRequest and not self._silent:
                if seen.selection == self._atom("CLIPBOARD_MANAGER"):
                    self._save(seen)
                else:
                    self._answer(seen, self._give(seen))

    def _answer(self, request, done=True):
        request.requestor.send_event(
            event.SelectionNotify(
                time=request.time,
                requestor=request.requestor,
                selection=request.selection,
                target=request.target,
                property=request.property if done else X.NONE,
            )
        )
        self._display.flush()

    def _save(self, request):
        """Fetches the text; what else there is, it need not keep."""
        target, clipboard = self._atom("UTF8_STRING"), self._atom("CLIPBOARD")
        self._window.convert_selection(clipboard, target, target, request.time)
        while self._display.next_event().type != X.SelectionNotify:
            pass
        self._saved = self._window.get_full_property(target, X.AnyPropertyType)
        self._answer(request)
        self._window.set_selection_owner(clipboard, X.CurrentTime)

    def _give(self, request):
        if request.target not in (self._atom("UTF8_STRING"), Xatom.STRING):
            return False
        request.requestor.change_property(
            request.property, request.target, 8, self._saved.value
        )
        return True


Manager(silent="silent" in sys.argv[1:]).run()
