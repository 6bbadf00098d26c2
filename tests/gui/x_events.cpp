#include "x_events.h"

#include <X11/Xlib.h>

void gui_test::send_exposure(Display *display, Window window) {
  XEvent event = {};
  event.xexpose.type = Expose;
  event.xexpose.window = window;
  XSendEvent(display, window, False, ExposureMask, &event);
  XFlush(display);
}

void gui_test::send_press(Display *display, Window window) {
  XEvent event = {};
  event.xbutton.type = ButtonPress;
  event.xbutton.window = window;
  event.xbutton.root = DefaultRootWindow(display);
  event.xbutton.button = Button1;
  event.xbutton.same_screen = True;
  XSendEvent(display, window, False, ButtonPressMask, &event);
  XSync(display, False);
}
