#include "x_events.h"

#include <X11/Xlib.h>

namespace gui_test {

void send_exposure(Display *display, Window window) {
  XEvent event = {};
  event.xexpose.type = Expose;
  event.xexpose.window = window;
  XSendEvent(display, window, False, ExposureMask, &event);
  XFlush(display);
}

void send_press(Display *display, Window window) {
  XEvent event = {};
  event.xbutton.type = ButtonPress;
  event.xbutton.window = window;
  event.xbutton.root = DefaultRootWindow(display);
  event.xbutton.button = Button1;
  event.xbutton.same_screen = True;
  XSendEvent(display, window, False, ButtonPressMask, &event);
  XSync(display, False);
}

} // namespace gui_test
