// Every row of the menu, for every combination of component states and of missing callbacks.

#include "interface.h"
#include "menu_table.h"

#include <gtest/gtest.h>
#include <objc/runtime.h>

using namespace gui_test;

namespace {

constexpr std::size_t first_row = 6; // of the components

NSString *const dot_text = @"●  ";

struct Piece {
  NSString *text;
  NSColor *colour;
  NSFont *font;
};

// --- According to the table ---------------------------------------------------------------------

std::string name_of(NSColor *colour) {
  return [colour isEqual:[NSColor systemGreenColor]]    ? "green"
         : [colour isEqual:[NSColor systemOrangeColor]] ? "orange"
         : [colour isEqual:[NSColor systemRedColor]]    ? "red"
                                                        : "another colour";
}

void take_title(Item &item, NSMenuItem *found) {
  NSAttributedString *title = [found attributedTitle];
  item.text = [title ? [title string] : [found title] UTF8String];
  const std::string dot = [dot_text UTF8String];
  if (title && item.text.compare(0, dot.size(), dot) == 0) {
    NSDictionary *attributes = [title attributesAtIndex:0 effectiveRange:NULL];
    item.dot = name_of([attributes objectForKey:NSForegroundColorAttributeName]);
    item.text.erase(0, dot.size());
  }
}

std::vector<Item> items_of(NSMenu *menu) {
  std::vector<Item> items;
  for (NSMenuItem *found in [menu itemArray]) {
    Item item;
    if ([found isSeparatorItem]) {
      item.text = separator_text;
    } else {
      take_title(item, found);
      item.key = [[found keyEquivalent] UTF8String];
      item.enabled = [found isEnabled];
      item.checked = [found state] == NSControlStateValueOn;
      item.submenu = items_of([found submenu]);
    }
    items.push_back(item);
  }
  return items;
}

/// Fills the menu and expects it to show and do what the table says for this config.
void expect_menu(Interface interface, const tdgui::GuiConfig &config) {
  filled(interface);
  const std::vector<Item> expected = expected_menu(config);
  EXPECT_EQ(lines(items_of(interface.menu)), lines(expected));
  expect_calls(expected, [&](std::vector<std::size_t> place) {
    NSMenuItem *item = [interface.menu itemAtIndex:place[0]];
    choose(place.size() == 1 ? item : [[item submenu] itemAtIndex:place[1]]);
  });
}

// --- Only in AppKit's items ---------------------------------------------------------------------

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

void expect_header(NSMenuItem *item, NSColor *dot) {
  expect_title(item,
               {{dot_text, dot, nil},
                {@"Tandrel 9.9", nil, [NSFont boldSystemFontOfSize:[NSFont systemFontSize]]}});
  EXPECT_STREQ([[item title] UTF8String], "");
}

void expect_row_title(NSMenuItem *row, NSString *label, bool running) {
  NSFont *small = [NSFont menuFontOfSize:[NSFont smallSystemFontSize]];
  expect_title(row,
               {{dot_text, running ? [NSColor systemGreenColor] : [NSColor systemRedColor], nil},
                {label, nil, [NSFont menuFontOfSize:0]},
                {running ? @"   running" : @"   stopped", [NSColor secondaryLabelColor], small}});
  EXPECT_STREQ([[row title] UTF8String], [label UTF8String]);
}

/// Expects every item with an action to send it to the target with the Command key, and the others
/// to have none; some versions of AppKit give an item an action that opens its submenu. Returns the
/// actions' names.
std::vector<std::string> actions_of(NSMenu *menu, id target) {
  EXPECT_TRUE([menu autoenablesItems]);
  std::vector<std::string> actions;
  for (NSMenuItem *item in [menu itemArray]) {
    if ([item submenu]) {
      EXPECT_TRUE([[item submenu] delegate] == nil);
      EXPECT_TRUE([item action] == NULL || sel_isEqual([item action], @selector(submenuAction:)));
    } else if ([item action]) {
      EXPECT_TRUE([item target] == target);
      EXPECT_TRUE([item attributedTitle] == nil);
      EXPECT_EQ([item keyEquivalentModifierMask],
                static_cast<NSUInteger>(NSEventModifierFlagCommand));
      actions.emplace_back([NSStringFromSelector([item action]) UTF8String]);
    }
  }
  return actions;
}

} // namespace

TEST(Menu, ShowsEveryCombinationOfStates) {
  const tdgui::GuiConfig config = full_config();
  run_interface(config, [&](Interface interface) {
    for (unsigned combination = 0; combination < 8; ++combination) {
      SCOPED_TRACE(combination);
      set_states(combination);
      expect_menu(interface, config);
    }
  });
}

TEST(Menu, ShowsEveryCombinationOfMissingCallbacks) {
  for (unsigned dropped = 0; dropped < 128; ++dropped) {
    SCOPED_TRACE(dropped);
    tdgui::GuiConfig config = full_config();
    drop_callbacks(config, dropped);
    record().open_browser = true;
    set_states(3);
    run_interface(config, [&](Interface interface) { expect_menu(interface, config); });
  }
}

TEST(Menu, ColoursItsTitles) {
  run_interface(full_config(), [](Interface interface) {
    NSString *labels[] = {@"Hub", @"Receiver", @"Sender"};
    for (unsigned combination = 0; combination < 8; ++combination) {
      SCOPED_TRACE(combination);
      set_states(combination);
      const std::vector<NSMenuItem *> items = filled(interface);
      expect_header(items[0],
                    combination == 7 ? [NSColor systemGreenColor] : [NSColor systemOrangeColor]);
      EXPECT_TRUE([items[1] attributedTitle] == nil);
      for (unsigned i = 0; i < 3; ++i) {
        expect_row_title(items[first_row + i], labels[i], (combination >> i & 1) != 0);
      }
    }
  });
}

TEST(Menu, SendsItsActionsToTheController) {
  run_interface(full_config(), [](Interface interface) {
    const std::vector<NSMenuItem *> items = filled(interface);
    const std::vector<std::string> names = {"hub", "receiver", "sender"};
    EXPECT_EQ(
        actions_of(interface.menu, interface.controller),
        (Calls{"openDashboard:", "copyUrl:", "openSettings:", "toggleOpenAtLaunch:", "quitNow:"}));
    for (std::size_t i = 0; i < names.size(); ++i) {
      NSMenu *submenu = [items[first_row + i] submenu];
      EXPECT_EQ(actions_of(submenu, interface.controller),
                (Calls{"startComponent:", "stopComponent:", "restartComponent:"}));
      for (NSMenuItem *item in [submenu itemArray]) {
        EXPECT_STREQ([[item representedObject] UTF8String], names[i].c_str());
      }
    }
    EXPECT_EQ(actions_of([items[10] submenu], interface.controller),
              (Calls{"startAll:", "stopAll:", "restartAll:"}));
  });
}

TEST(Menu, HeaderAsksInOrderUpToTheFirstStoppedComponentAndThenEveryRowAsks) {
  tdgui::GuiConfig config = full_config();
  config.is_running = note_question;
  run_interface(config, [](Interface interface) {
    for (unsigned combination = 0; combination < 8; ++combination) {
      set_states(combination);
      record().calls.clear();
      filled(interface);
      EXPECT_EQ(record().calls, expected_questions()) << combination;
    }
  });
}

TEST(Menu, ShowsAChangeOnlyWhenItIsBuiltAnew) {
  const tdgui::GuiConfig config = full_config();
  run_interface(config, [&](Interface interface) {
    const std::vector<NSMenuItem *> items = filled(interface);
    const std::vector<std::string> before = lines(expected_menu(config));
    set_states(5);
    record().is_running_calls = 0;
    [interface.menu update];
    turn_loop(NSEventTrackingRunLoopMode);
    EXPECT_EQ(record().is_running_calls, 0);
    ASSERT_EQ([interface.menu numberOfItems], static_cast<NSInteger>(items.size()));
    EXPECT_TRUE([interface.menu itemAtIndex:0] == items[0]);
    expect_header(items[0], [NSColor systemGreenColor]);
    expect_row_title(items[first_row + 1], @"Receiver", true);
    EXPECT_NE(before, lines(expected_menu(config)));
    expect_menu(interface, config);
  });
}

TEST(Menu, WithoutComponentsKeepsItsSeparatorsAndIsGreen) {
  tdgui::GuiConfig config = full_config();
  config.components.clear();
  run_interface(config, [&](Interface interface) { expect_menu(interface, config); });
}

TEST(Menu, ShowsEmptyTextsAsEmpty) {
  tdgui::GuiConfig config = full_config();
  config.url = config.status = "";
  run_interface(config, [&](Interface interface) { expect_menu(interface, config); });
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
