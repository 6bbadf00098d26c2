#include "x11/monitor.h"

#include <algorithm>

namespace {

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
  NSRect best = [[[NSScreen screens] objectAtIndex:0] frame]; // the primary one
  for (NSScreen *screen in [NSScreen screens]) {
    if (is_nearer([screen frame], best, place)) {
      best = [screen frame];
    }
  }
  return best;
}

} // namespace td
