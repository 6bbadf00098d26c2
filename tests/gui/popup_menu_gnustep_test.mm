// The menu on the screen: opening it and choosing an item by pointer and keyboard.

#include "interface.h"
#include "menu/menu_text.h"
#include "menu/menu_view.h"
#include "menu/popup_menu.h"

#include <deque>

#include <gtest/gtest.h>

using namespace gui_test;

namespace {

std::deque<std::function<void()>> g_steps;

NSWindow *open_menu(std::size_t depth = 0) {
  std::vector<NSWindow *> found;
  for (NSWindow *window in [NSApp windows]) {
    if ([window isVisible] && [[window contentView] isKindOfClass:[TDMenuView class]]) {
      found.push_back(window);
    }
  }
  return depth < found.size() ? found[depth] : nil;
}

std::size_t open_menus() {
  std::size_t count = 0;
  while (open_menu(count)) {
    ++count;
  }
  return count;
}

void post_key(unichar key, NSUInteger modifiers = 0) {
  NSString *text = [NSString stringWithCharacters:&key length:1];
  [NSApp postEvent:[NSEvent keyEventWithType:NSKeyDown
                                          location:NSZeroPoint
                                     modifierFlags:modifiers
                                         timestamp:0
                                      windowNumber:[open_menu() windowNumber]
                                           context:nil
                                        characters:text
                       charactersIgnoringModifiers:text
                                         isARepeat:NO
                                           keyCode:0]
           atStart:NO];
}

void post_mouse(NSEventType type, NSWindow *window, NSPoint location) {
  [NSApp postEvent:[NSEvent mouseEventWithType:type
                                      location:location
                                 modifierFlags:0
                                     timestamp:0
                                  windowNumber:[window windowNumber]
                                       context:nil
                                   eventNumber:0
                                    clickCount:1
                                      pressure:0]
           atStart:NO];
}

/// Presses and releases the left button over an item.
void click_row(NSWindow *window, NSString *title) {
  TDMenuView *view = [window contentView];
  const NSInteger row = [[view shownMenu] indexOfItem:item_titled([view shownMenu], title)];
  const NSRect rect = [view convertRect:[view rectOfRow:row] toView:nil];
  const NSPoint middle = NSMakePoint(NSMidX(rect), NSMidY(rect));
  post_mouse(NSLeftMouseDown, window, middle);
  post_mouse(NSLeftMouseUp, window, middle);
}

} // namespace

@interface PopupMenuTestSteps : NSObject
@end

@implementation PopupMenuTestSteps
- (void)next:(NSTimer *)timer {
  if (g_steps.empty() || !open_menu()) {
    return;
  }
  const auto step = g_steps.front();
  g_steps.pop_front();
  step();
}
@end

namespace {

/// Opens the menu and runs the steps one after the other while it is open.
void open_and(Interface interface, const std::deque<std::function<void()>> &steps,
              NSRect anchor = NSMakeRect(300, 700, 22, 22)) {
  g_steps = steps;
  NSTimer *timer = [NSTimer timerWithTimeInterval:0.05
                                           target:[[[PopupMenuTestSteps alloc] init] autorelease]
                                         selector:@selector(next:)
                                         userInfo:nil
                                          repeats:YES];
  [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSEventTrackingRunLoopMode];
  record().calls.clear();
  td::pop_up_menu(interface.menu, anchor);
  [timer invalidate];
  EXPECT_TRUE(g_steps.empty());
  EXPECT_EQ(open_menus(), 0u);
}

using Calls = std::vector<std::string>;

} // namespace

TEST(PopupMenu, OneOpeningFillsTheMenuOnce) {
  run_interface(full_config(), [](Interface interface) {
    record().is_running_calls = 0;
    open_and(interface, {[] {
               EXPECT_EQ(open_menus(), 1u);
               post_key('\033');
             }});
    EXPECT_EQ(record().is_running_calls, 3 + 3);
    EXPECT_EQ(record().calls, Calls{});
  });
}

TEST(PopupMenu, AClickChoosesFromASubmenu) {
  run_interface(full_config(), [](Interface interface) {
    open_and(interface,
             {[] { click_row(open_menu(), @"●  Receiver   running"); },
              [] {
                ASSERT_EQ(open_menus(), 2u);
                NSWindow *submenu = open_menu(0);
                if ([[(TDMenuView *)[submenu contentView] shownMenu] numberOfItems] != 3) {
                  submenu = open_menu(1);
                }
                click_row(submenu, @"Stop");
              }});
    EXPECT_EQ(record().calls, Calls{"stop receiver"});
  });
}

TEST(PopupMenu, ADisabledItemIsNotChosen) {
  run_interface(full_config(), [](Interface interface) {
    open_and(interface, {[] { click_row(open_menu(), @"http://localhost:8080/"); },
                         [] {
                           EXPECT_EQ(open_menus(), 1u);
                           post_key('\033');
                         }});
    EXPECT_EQ(record().calls, Calls{});
  });
}

TEST(PopupMenu, AClickElsewhereClosesIt) {
  run_interface(full_config(), [](Interface interface) {
    open_and(interface, {[] { post_mouse(NSLeftMouseDown, open_menu(), NSMakePoint(-50, -50)); }});
    EXPECT_EQ(record().calls, Calls{});
  });
}

TEST(PopupMenu, TheOpeningClickLeavesItOpen) {
  run_interface(full_config(), [](Interface interface) {
    open_and(interface, {[] { post_mouse(NSLeftMouseUp, open_menu(), NSMakePoint(-50, -50)); },
                         [] {
                           EXPECT_EQ(open_menus(), 1u);
                           post_key('\033');
                         }});
  });
}

TEST(PopupMenu, ArrowKeysReachASubmenu) {
  run_interface(full_config(), [](Interface interface) {
    open_and(interface, {[] {
               for (int i = 0; i < 3; ++i) {
                 post_key(NSDownArrowFunctionKey); // Open, Copy, Hub
               }
               post_key(NSRightArrowFunctionKey); // Start
               post_key(NSDownArrowFunctionKey);  // Stop
               post_key('\r');
             }});
    EXPECT_EQ(record().calls, Calls{"stop hub"});
  });
}

TEST(PopupMenu, KeyEquivalentsWorkWhileItIsOpen) {
  run_interface(full_config(), [](Interface interface) {
    [[NSPasteboard generalPasteboard] declareTypes:[NSArray array] owner:nil];
    open_and(interface, {[] { post_key('c', NSCommandKeyMask); }});
    EXPECT_STREQ(
        [[[NSPasteboard generalPasteboard] stringForType:NSPasteboardTypeString] UTF8String],
        "http://localhost:8080/");
  });
}

TEST(PopupMenu, StaysOnTheScreen) {
  run_interface(full_config(), [](Interface interface) {
    const NSRect screen = [[NSScreen mainScreen] frame];
    const NSPoint corners[] = {{0, 0},
                               {NSMaxX(screen) - 10, 0},
                               {0, NSMaxY(screen) - 10},
                               {NSMaxX(screen) - 10, NSMaxY(screen) - 10}};
    for (const NSPoint &corner : corners) {
      const auto check = [&] {
        EXPECT_TRUE(NSContainsRect(screen, [open_menu() frame]))
            << [NSStringFromRect([open_menu() frame]) UTF8String];
        post_key('\033');
      };
      open_and(interface, {check}, NSMakeRect(corner.x, corner.y, 10, 10));
    }
  });
}

TEST(MenuText, SecondaryTextIsGrey) {
  @autoreleasepool {
    NSColor *grey =
        [[NSColor secondaryLabelColor] colorUsingColorSpaceName:NSCalibratedWhiteColorSpace];
    EXPECT_GT([grey whiteComponent], 0.3);
    EXPECT_LT([grey whiteComponent], 0.7);
  }
}

TEST(MenuText, NamesTheKeyAndFillsInFontAndColour) {
  run_interface(full_config(), [](Interface interface) {
    const std::vector<NSMenuItem *> items = filled(interface);
    EXPECT_STREQ([[td::shown_key(items[3]) string] UTF8String], "Alt+O");
    EXPECT_STREQ([[td::shown_key(items[1]) string] UTF8String], "");
    NSAttributedString *title = td::shown_title(items[6]);
    EXPECT_EQ([title length], [[items[6] attributedTitle] length]);
    EXPECT_TRUE([[title attribute:NSForegroundColorAttributeName atIndex:0
                   effectiveRange:NULL] isEqual:[NSColor systemGreenColor]]);
    for (NSUInteger at = 0; at < [title length]; ++at) {
      EXPECT_TRUE([title attribute:NSFontAttributeName atIndex:at effectiveRange:NULL] != nil);
      EXPECT_TRUE([title attribute:NSForegroundColorAttributeName atIndex:at
                      effectiveRange:NULL] != nil);
    }
  });
}
