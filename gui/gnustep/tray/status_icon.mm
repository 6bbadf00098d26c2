#include "tray/status_icon.h"

#include "process/display_guard.h"
#include "tray/tool_tip.h"
#include "tray/tray_icon.h"
#include "x11/drawn_picture.h"
#include "x11/monitor.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr NSTimeInterval tool_tip_delay = 0.7;

/// How much larger than on an ordinary screen an image is drawn in a square of `side` pixels. Whole
/// and half scales keep its edges sharp.
double image_scale(NSSize image, int side) {
  constexpr double filled_part = 0.85, smallest_margin = 1;
  const double length = std::max(image.width, image.height);
  const double scale = std::floor(side * filled_part / length * 2) / 2;
  return scale >= 1 ? scale : std::min(1.0, (side - 2 * smallest_margin) / length);
}

td::Picture picture_of(NSImage *image, int side) {
  const double scale = image_scale([image size], side);
  const int width = static_cast<int>(std::ceil([image size].width * scale)),
            height = static_cast<int>(std::ceil([image size].height * scale));
  return td::drawn_picture(width, height, [&] {
    NSAffineTransform *transform = [NSAffineTransform transform];
    [transform scaleBy:scale];
    [transform concat];
    [[[image representations] objectAtIndex:0] draw];
  });
}

/// Screen coordinates: GNUstep's are in points from the bottom left, the X server's in pixels from
/// the top left.
td::ScreenRect from_gnustep(NSRect rect, CGFloat screen_height) {
  return {static_cast<int>(NSMinX(rect)), static_cast<int>(screen_height - NSMaxY(rect)),
          static_cast<unsigned int>(NSWidth(rect)), static_cast<unsigned int>(NSHeight(rect))};
}

/// A run loop takes a descriptor as a pointer.
void *as_run_loop_data(std::intptr_t descriptor) {
  return reinterpret_cast<void *>(descriptor); // NOLINT(performance-no-int-to-ptr)
}

NSArray *every_mode() {
  return [NSArray arrayWithObjects:NSDefaultRunLoopMode, NSEventTrackingRunLoopMode,
                                   NSModalPanelRunLoopMode, nil];
}

} // namespace

@interface TDStatusIcon () <RunLoopEvents>
@end

@implementation TDStatusIcon

- (instancetype)initWithTarget:(id)target action:(SEL)action {
  if ((self = [super init])) {
    _target = target;
    _action = action;
    _icon = new td::TrayIcon([self trayIconDelegate]);
    [self listen];
    _icon->start();
  }
  return self;
}

- (td::TrayIconDelegate)trayIconDelegate {
  __unsafe_unretained TDStatusIcon *icon = self;
  td::TrayIconDelegate delegate;
  delegate.image = [icon](int side) {
    return icon->_image ? picture_of(icon->_image, side) : td::Picture();
  };
  delegate.monitor = [icon] { return [icon primaryMonitor]; };
  delegate.start_timer = [icon](double seconds) {
    [icon performSelector:@selector(dockTimedOut)
               withObject:nil
               afterDelay:seconds
                  inModes:every_mode()];
  };
  delegate.pressed = [icon](td::ScreenRect place) { [icon pressAt:place]; };
  delegate.pointed = [icon](bool inside) { [icon pointAt:inside]; };
  delegate.lost = td::quit_without_display; // nobody could quit any more
  return delegate;
}

- (void)listen {
  void *descriptor = as_run_loop_data(_icon->connection().descriptor());
  for (NSString *mode in every_mode()) {
    [[NSRunLoop currentRunLoop] addEvent:descriptor type:ET_RDESC watcher:self forMode:mode];
  }
  [[NSNotificationCenter defaultCenter]
      addObserver:self
         selector:@selector(monitorsChanged:)
             name:NSApplicationDidChangeScreenParametersNotification
           object:nil];
}

- (void)stopListening {
  void *descriptor = as_run_loop_data(_icon->connection().descriptor());
  for (NSString *mode in every_mode()) {
    [[NSRunLoop currentRunLoop] removeEvent:descriptor type:ET_RDESC forMode:mode all:YES];
  }
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [NSObject cancelPreviousPerformRequestsWithTarget:self];
}

- (void)close {
  if (_icon) {
    [self stopListening];
    [self hideToolTip];
    delete _icon;
    _icon = nullptr;
  }
}

- (void)dealloc {
  [self close];
  [_image release];
  [_toolTip release];
  [super dealloc];
}

- (void)setImage:(NSImage *)image {
  [image retain];
  [_image release];
  _image = image;
  _icon->image_changed();
}

- (void)setToolTip:(NSString *)text {
  [text retain];
  [_toolTip release];
  _toolTip = text;
  _icon->set_title(text ? [text UTF8String] : "");
}

// --- Places -------------------------------------------------------------------------------------

- (CGFloat)screenHeight {
  return _icon->connection().place_of(_icon->connection().root()).height;
}

- (td::ScreenRect)primaryMonitor {
  const NSRect monitor = [[[NSScreen screens] objectAtIndex:0] frame];
  return from_gnustep(monitor, [self screenHeight]);
}

- (NSRect)frameOf:(td::ScreenRect)place {
  return NSMakeRect(place.x, [self screenHeight] - place.y - place.height, place.width,
                    place.height);
}

- (NSRect)frameOnScreen {
  const NSRect frame = [self frameOf:_icon->place()];
  _icon->handle_events(); // those read while waiting for the answer
  return frame;
}

- (void)monitorsChanged:(NSNotification *)notification {
  _icon->monitors_changed();
}

// --- Events -------------------------------------------------------------------------------------

- (void)receivedEvent:(void *)data
                 type:(RunLoopEventType)type
                extra:(void *)extra
              forMode:(NSString *)mode {
  _icon->handle_events();
}

- (void)dockTimedOut {
  _icon->dock_timed_out();
}

/// The action runs a loop of its own and is therefore not called from within the event's handling,
/// and not by that loop again.
- (void)pressAt:(td::ScreenRect)place {
  NSArray *modes = [NSArray arrayWithObjects:NSDefaultRunLoopMode, NSModalPanelRunLoopMode, nil];
  [_target performSelector:_action
                withObject:[NSValue valueWithRect:[self frameOf:place]]
                afterDelay:0
                   inModes:modes];
}

- (void)pointAt:(BOOL)inside {
  [NSObject cancelPreviousPerformRequestsWithTarget:self
                                           selector:@selector(showToolTip)
                                             object:nil];
  [self hideToolTip];
  if (inside && _toolTip) {
    [self performSelector:@selector(showToolTip) withObject:nil afterDelay:tool_tip_delay];
  }
}

- (void)showToolTip {
  const NSRect frame = [self frameOnScreen];
  const CGFloat height = [self screenHeight];
  _shownToolTip = td::show_tool_tip(_icon->connection(), _toolTip, from_gnustep(frame, height),
                                    from_gnustep(td::monitor_of(frame), height))
                      .release();
  _icon->handle_events();
}

- (void)hideToolTip {
  delete _shownToolTip;
  _shownToolTip = nullptr;
}

@end
