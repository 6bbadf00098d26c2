// Every row of the menu, for every combination of component states and of missing callbacks.

#include "interface.h"

#include <gtest/gtest.h>
#include <objc/runtime.h>

using namespace gui_test;

namespace {

constexpr std::size_t first_row = 6; // of the components

struct Piece {
  NSString *text;
  NSColor *colour;
  NSFont *font;
};

/// Expects the title to consist of exactly these pieces with exactly these attributes.
void expect_title(NSMenuItem *item, const std::vector<Piece> &pieces) {
  NSAttributedString *title = [item attributedTitle];
  NSUInteger at = 0;
  for (const Piece &piece : pieces) {
    const NSUInteger end = at + [piece.text length];
    ASSERT_LE(end, [title length]);
    EXPECT_STREQ([[[title string] substringWithRange:NSMakeRange(at, end - at)] UTF8String],
                 [piece.text UTF8String]);
    for (; at < end; ++at) {
      NSDictionary *found = [title attributesAtIndex:at effectiveRange:NULL];
      EXPECT_EQ([found count], (piece.colour ? 1u : 0u) + (piece.font ? 1u : 0u)) << at;
      NSColor *colour = [found objectForKey:NSForegroundColorAttributeName];
      NSFont *font = [found objectForKey:NSFontAttributeName];
      EXPECT_TRUE(colour == piece.colour || [colour isEqual:piece.colour]) << at;
      EXPECT_TRUE(font == piece.font || [font isEqual:piece.font]) << at;
    }
  }
  EXPECT_EQ(at, [title length]);
}

/// Expects an item that only shows text.
void expect_caption(NSMenuItem *item) {
  EXPECT_FALSE([item isEnabled]);
  EXPECT_TRUE([item action] == NULL);
  EXPECT_STREQ([[item keyEquivalent] UTF8String], "");
}

/// Expects an item that only opens its submenu; some versions of AppKit give it an action for that.
void expect_opener(NSMenuItem *item) {
  EXPECT_TRUE([item action] == NULL || sel_isEqual([item action], @selector(submenuAction:)));
  EXPECT_STREQ([[item keyEquivalent] UTF8String], "");
  EXPECT_TRUE([[item submenu] autoenablesItems]);
  EXPECT_TRUE([[item submenu] delegate] == nil);
}

void expect_header(NSMenuItem *item, NSColor *dot) {
  expect_title(item,
               {{@"●  ", dot, nil},
                {@"Tandrel 9.9", nil, [NSFont boldSystemFontOfSize:[NSFont systemFontSize]]}});
  EXPECT_STREQ([[item title] UTF8String], "");
  expect_caption(item);
}

void expect_row_title(NSMenuItem *row, NSString *label, bool running) {
  NSFont *small = [NSFont menuFontOfSize:[NSFont smallSystemFontSize]];
  expect_title(row,
               {{@"●  ", running ? [NSColor systemGreenColor] : [NSColor systemRedColor], nil},
                {label, nil, [NSFont menuFontOfSize:0]},
                {running ? @"   running" : @"   stopped", [NSColor secondaryLabelColor], small}});
  EXPECT_STREQ([[row title] UTF8String], [label UTF8String]);
}

void expect_action(NSMenuItem *item, const char *title, const char *action, const char *key,
                   id target) {
  EXPECT_STREQ([[item title] UTF8String], title);
  EXPECT_STREQ([NSStringFromSelector([item action]) UTF8String], action);
  EXPECT_STREQ([[item keyEquivalent] UTF8String], key);
  EXPECT_EQ([item keyEquivalentModifierMask], static_cast<NSUInteger>(NSEventModifierFlagCommand));
  EXPECT_TRUE([item target] == target);
  EXPECT_TRUE([item attributedTitle] == nil);
}

void expect_row_submenu(NSMenuItem *row, const char *name, bool running, id target) {
  expect_opener(row);
  NSMenu *menu = [row submenu];
  ASSERT_EQ([menu numberOfItems], 3);
  expect_action([menu itemAtIndex:0], "Start", "startComponent:", "", target);
  expect_action([menu itemAtIndex:1], "Stop", "stopComponent:", "", target);
  expect_action([menu itemAtIndex:2], "Restart", "restartComponent:", "", target);
  EXPECT_EQ([[menu itemAtIndex:0] isEnabled], !running);
  EXPECT_EQ([[menu itemAtIndex:1] isEnabled], running);
  EXPECT_EQ([[menu itemAtIndex:2] isEnabled], running);
  for (NSMenuItem *item in [menu itemArray]) {
    EXPECT_STREQ([[item representedObject] UTF8String], name);
  }
}

void expect_all_submenu(NSMenuItem *item, id target) {
  EXPECT_STREQ([[item title] UTF8String], "All Components");
  EXPECT_TRUE([item attributedTitle] == nil);
  expect_opener(item);
  NSMenu *menu = [item submenu];
  ASSERT_EQ([menu numberOfItems], 3);
  expect_action([menu itemAtIndex:0], "Start All", "startAll:", "", target);
  expect_action([menu itemAtIndex:1], "Stop All", "stopAll:", "", target);
  expect_action([menu itemAtIndex:2], "Restart All", "restartAll:", "", target);
  for (NSMenuItem *entry in [menu itemArray]) {
    EXPECT_TRUE([entry isEnabled]);
    EXPECT_TRUE([entry representedObject] == nil);
  }
}

void expect_separators(const std::vector<NSMenuItem *> &items, std::size_t rows) {
  const std::vector<std::size_t> expected = {2,        5,         6 + rows, 8 + rows,
                                             9 + rows, 12 + rows, 13 + rows};
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if ([items[i] isSeparatorItem]) {
      found.push_back(i);
    }
  }
  EXPECT_EQ(found, expected);
}

/// Expects all items except the header and the component rows, and no particular check mark.
void expect_fixed_items(const std::vector<NSMenuItem *> &items, std::size_t rows, id target) {
  ASSERT_EQ(items.size(), 15 + rows);
  EXPECT_STREQ([[items[1] title] UTF8String], "http://localhost:8080/");
  EXPECT_TRUE([items[1] attributedTitle] == nil);
  expect_caption(items[1]);
  expect_action(items[3], "Open Dashboard", "openDashboard:", "o", target);
  expect_action(items[4], "Copy Dashboard Address", "copyUrl:", "c", target);
  expect_all_submenu(items[7 + rows], target);
  expect_action(items[10 + rows], "Settings…", "openSettings:", ",", target);
  expect_action(items[11 + rows], "Open Dashboard at Launch", "toggleOpenAtLaunch:", "", target);
  expect_action(items[14 + rows], "Quit Tandrel", "quitNow:", "q", target);
  expect_separators(items, rows);
}

void expect_menu(Interface interface, const std::vector<bool> &running, NSColor *dot, bool on) {
  const std::vector<std::string> names = {"hub", "receiver", "sender"};
  NSString *labels[] = {@"Hub", @"Receiver", @"Sender"};
  const std::vector<NSMenuItem *> items = filled(interface);
  expect_fixed_items(items, running.size(), interface.controller);
  expect_header(items[0], dot);
  for (std::size_t i = 0; i < running.size(); ++i) {
    expect_row_title(items[first_row + i], labels[i], running[i]);
    expect_row_submenu(items[first_row + i], names[i].c_str(), running[i], interface.controller);
  }
  EXPECT_EQ([items[11 + running.size()] state], on ? 1 : 0);
  EXPECT_TRUE([interface.menu autoenablesItems]);
}

std::vector<bool> states(unsigned combination) {
  return {(combination & 1) != 0, (combination & 2) != 0, (combination & 4) != 0};
}

void set_states(const std::vector<bool> &running) {
  record().running = {{"hub", running[0]}, {"receiver", running[1]}, {"sender", running[2]}};
}

/// Removes the callbacks that the bits of `dropped` stand for.
void drop_callbacks(tdgui::GuiConfig &config, unsigned dropped) {
  if (dropped & 1) {
    config.is_running = nullptr;
  }
  if (dropped & 2) {
    config.open_browser_pref = nullptr;
  }
  if (dropped & 4) {
    config.set_open_browser_pref = nullptr;
  }
  if (dropped & 8) {
    config.start = config.stop = config.restart = nullptr;
  }
  if (dropped & 16) {
    config.quit = nullptr;
  }
  if (dropped & 32) {
    config.set_ports = nullptr;
  }
  if (dropped & 64) {
    config.http_port = config.udp_port = nullptr;
  }
}

} // namespace

TEST(Menu, ShowsEveryCombinationOfStates) {
  run_interface(full_config(), [](Interface interface) {
    for (unsigned combination = 0; combination < 8; ++combination) {
      SCOPED_TRACE(combination);
      set_states(states(combination));
      expect_menu(interface, states(combination),
                  combination == 7 ? [NSColor systemGreenColor] : [NSColor systemOrangeColor],
                  false);
    }
  });
}

TEST(Menu, ShowsEveryCombinationOfMissingCallbacks) {
  for (unsigned dropped = 0; dropped < 128; ++dropped) {
    SCOPED_TRACE(dropped);
    tdgui::GuiConfig config = full_config();
    drop_callbacks(config, dropped);
    record().open_browser = true;
    set_states({true, true, false});
    const bool asks = (dropped & 1) == 0;
    run_interface(config, [&](Interface interface) {
      expect_menu(interface, {asks, asks, false},
                  asks ? [NSColor systemOrangeColor] : [NSColor systemGreenColor],
                  (dropped & 2) == 0);
    });
  }
}

TEST(Menu, HeaderAsksInOrderUpToTheFirstStoppedComponentAndThenEveryRowAsks) {
  tdgui::GuiConfig config = full_config();
  config.is_running = [](const std::string &name) {
    record().calls.push_back(name);
    return record().running.at(name);
  };
  run_interface(config, [](Interface interface) {
    const std::vector<std::string> names = {"hub", "receiver", "sender"};
    for (unsigned combination = 0; combination < 8; ++combination) {
      const std::vector<bool> running = states(combination);
      set_states(running);
      record().calls.clear();
      filled(interface);
      std::vector<std::string> expected;
      for (std::size_t i = 0; i < names.size() && (i == 0 || running[i - 1]); ++i) {
        expected.push_back(names[i]);
      }
      expected.insert(expected.end(), names.begin(), names.end());
      EXPECT_EQ(record().calls, expected) << combination;
    }
  });
}

TEST(Menu, ShowsAChangeOnlyWhenItIsBuiltAnew) {
  run_interface(full_config(), [](Interface interface) {
    const std::vector<NSMenuItem *> items = filled(interface);
    set_states({true, false, true});
    record().is_running_calls = 0;
    [interface.menu update];
    turn_loop(NSEventTrackingRunLoopMode);
    EXPECT_EQ(record().is_running_calls, 0);
    ASSERT_EQ([interface.menu numberOfItems], static_cast<NSInteger>(items.size()));
    EXPECT_TRUE([interface.menu itemAtIndex:0] == items[0]);
    expect_header(items[0], [NSColor systemGreenColor]);
    expect_row_title(items[first_row + 1], @"Receiver", true);
    expect_menu(interface, {true, false, true}, [NSColor systemOrangeColor], false);
  });
}

TEST(Menu, WithoutComponentsKeepsItsSeparatorsAndIsGreen) {
  tdgui::GuiConfig config = full_config();
  config.components.clear();
  run_interface(config, [](Interface interface) {
    expect_menu(interface, {}, [NSColor systemGreenColor], false);
  });
}

TEST(Menu, ShowsEmptyTextsAsEmpty) {
  tdgui::GuiConfig config = full_config();
  config.url = config.status = "";
  run_interface(config, [](Interface interface) {
    const std::vector<NSMenuItem *> items = filled(interface);
    EXPECT_STREQ([[[items[0] attributedTitle] string] UTF8String], "●  ");
    EXPECT_STREQ([[items[1] title] UTF8String], "");
  });
}

TEST(Menu, IsBuiltAnewFromUtf8EachTime) {
  tdgui::GuiConfig config = full_config();
  config.components = {{"hub", "Höb ♫"}};
  run_interface(config, [](Interface interface) {
    const std::vector<NSMenuItem *> first = filled(interface);
    const std::vector<NSMenuItem *> second = filled(interface);
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
      EXPECT_NE(first[i], second[i]) << i;
    }
    EXPECT_STREQ([[second[first_row] title] UTF8String], "Höb ♫");
  });
}
