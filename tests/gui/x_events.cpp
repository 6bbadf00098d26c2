#include "x_events.h"

#include <X11/Xlib.h>

void gui_test::send_exposure(Display *display, Window window) {
  XEvent event = {};
  event.xexpose.type = Expose;
  event.xexpose.window = window;
  XSendEvent(display, window, False, ExposureMask, &event);
  XFlush(display);
}

bool gui_test::is_on_screen(Display *display, Window window) {
  XWindowAttributes attributes = {};
  XGetWindowAttributes(display, window, &attributes);
  return attributes.map_state == IsViewable;
}
