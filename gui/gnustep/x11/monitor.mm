#include "x11/monitor.h"

#include <algorithm>
#include <memory>
#include <vector>

#import <GNUstepGUI/GSDisplayServer.h>
#include <X11/extensions/Xrandr.h>

namespace {

std::vector<NSRect> gnusteps_monitors() {
  std::vector<NSRect> frames;
  for (NSScreen *screen in [NSScreen screens]) {
    frames.push_back([screen frame]);
  }
  return frames;
}

bool lists_monitors(Display *display) {
  int event = 0, error = 0, major = 0, minor = 0;
  return XRRQueryExtension(display, &event, &error) && XRRQueryVersion(display, &major, &minor) &&
         (major > 1 || minor >= 5);
}

/// The monitors' frames, the primary one's first. GNUstep knows only those that are an output of
/// the graphics card, not the ones that "xrandr --setmonitor" makes.
std::vector<NSRect> monitors() {
  auto *display = static_cast<Display *>([GSCurrentServer() serverDevice]);
  if (!lists_monitors(display)) {
    return gnusteps_monitors();
  }
  int count = 0;
  const std::unique_ptr<XRRMonitorInfo, decltype(&XRRFreeMonitors)> found(
      XRRGetMonitors(display, DefaultRootWindow(display), True, &count), XRRFreeMonitors);
  const CGFloat top = DisplayHeight(display, DefaultScreen(display));
  std::vector<NSRect> frames;
  for (int i = 0; i < count; ++i) {
    const XRRMonitorInfo &monitor = found.get()[i];
    const NSRect frame =
        NSMakeRect(monitor.x, top - monitor.y - monitor.height, monitor.width, monitor.height);
    frames.insert(monitor.primary ? frames.begin() : frames.end(), frame);
  }
  return frames.empty() ? gnusteps_monitors() : frames;
}

CGFloat shown_area(NSRect monitor, NSRect place) {
  const NSRect shown = NSIntersectionRect(monitor, place);
  return NSWidth(shown) * NSHeight(shown);
}

/// The square of the distance between the monitor and the middle of `place`.
CGFloat distance(NSRect monitor, NSRect place) {
  const CGFloat x = NSMidX(place) - std::clamp(NSMidX(place), NSMinX(monitor), NSMaxX(monitor));
  const CGFloat y = NSMidY(place) - std::clamp(NSMidY(place), NSMinY(monitor), NSMaxY(monitor));
  return x * x + y * y;
}

bool is_nearer(NSRect monitor, NSRect other, NSRect place) {
  const CGFloat area = shown_area(monitor, place), other_area = shown_area(other, place);
  return area > other_area ||
         (area == other_area && distance(monitor, place) < distance(other, place));
}

} // namespace

namespace td {

NSRect monitor_of(NSRect place) {
  const std::vector<NSRect> frames = monitors();
  return *std::min_element(frames.begin(), frames.end(), [&](NSRect frame, NSRect other) {
    return is_nearer(frame, other, place);
  });
}

} // namespace td
