// The menu-bar interface: one status item whose menu is rebuilt each time it opens, and the dialog
// that moves the hub to other ports. References are counted by hand, and nothing made here is
// released: the status item lives as long as the process, and the items of a menu are small.

#include "bars.h"
#include "tdgui.h"

#include <algorithm>

#import <AppKit/AppKit.h>

namespace {

/// The callbacks of a GuiConfig; each may be null.
struct Callbacks {
  bool (*is_running)(const std::string &name);
  void (*start)(const std::string &name);
  void (*stop)(const std::string &name);
  void (*restart)(const std::string &name);
  void (*quit)();
  bool (*set_ports)(int http, int udp, std::string &error);
  int (*http_port)();
  int (*udp_port)();
  bool (*open_browser_pref)();
  void (*set_open_browser_pref)(bool open);
};

struct Ports {
  int http;
  int udp;
};

struct PortsForm {
  NSView *view;
  NSTextField *http;
  NSTextField *udp;
};

// Written by run() before the event loop starts, only read afterwards, always on the main thread.
std::string g_url;
std::string g_status;
std::vector<tdgui::Component> g_components;
Callbacks g_ctl;

NSString *string_from(const std::string &text) {
  return [NSString stringWithUTF8String:text.c_str()];
}

// --- State --------------------------------------------------------------------------------------

Callbacks callbacks_of(const tdgui::GuiConfig &config) {
  return {config.is_running,
          config.start,
          config.stop,
          config.restart,
          config.quit,
          config.set_ports,
          config.http_port,
          config.udp_port,
          config.open_browser_pref,
          config.set_open_browser_pref};
}

/// Without is_running a row shows its component as stopped; the header (all_running) counts it as
/// running.
bool row_is_running(const tdgui::Component &component) {
  return g_ctl.is_running && g_ctl.is_running(component.name);
}

bool all_running() {
  return std::all_of(g_components.begin(), g_components.end(), [](const auto &component) {
    return !g_ctl.is_running || g_ctl.is_running(component.name);
  });
}

Ports current_ports() {
  return {g_ctl.http_port ? g_ctl.http_port() : 4466, g_ctl.udp_port ? g_ctl.udp_port() : 4465};
}

std::string component_name(NSMenuItem *item) {
  return [(NSString *)[item representedObject] UTF8String];
}

// --- Icon ---------------------------------------------------------------------------------------

NSImage *tdMenuBarIcon() { // NOLINT(readability-identifier-naming)
  return [NSImage imageWithSize:NSMakeSize(tdgui::bars_width, tdgui::bars_height)
                        flipped:NO
                 drawingHandler:^BOOL(NSRect) {
                   [[NSColor colorWithSRGBRed:tdgui::bars_red
                                        green:tdgui::bars_green
                                         blue:tdgui::bars_blue
                                        alpha:1.0] setFill];
                   for (const auto &[x, y, width, height] : tdgui::bars) {
                     [[NSBezierPath bezierPathWithRoundedRect:NSMakeRect(x, y, width, height)
                                                      xRadius:tdgui::bar_radius
                                                      yRadius:tdgui::bar_radius] fill];
                   }
                   return YES;
                 }];
}

// --- Attributed titles --------------------------------------------------------------------------

/// `colour` and `font` may be nil: that attribute is then absent.
NSAttributedString *text_piece(NSString *text, NSColor *colour, NSFont *font) {
  NSMutableDictionary *attributes = [NSMutableDictionary dictionary];
  if (colour) {
    [attributes setObject:colour forKey:NSForegroundColorAttributeName];
  }
  if (font) {
    [attributes setObject:font forKey:NSFontAttributeName];
  }
  return [[NSAttributedString alloc] initWithString:text attributes:attributes];
}

NSAttributedString *state_dot(NSColor *colour) {
  return text_piece(@"●  ", colour, nil);
}

NSAttributedString *header_title() {
  NSColor *colour = all_running() ? [NSColor systemGreenColor] : [NSColor systemOrangeColor];
  NSFont *font = [NSFont boldSystemFontOfSize:[NSFont systemFontSize]];
  NSMutableAttributedString *title = [[NSMutableAttributedString alloc] init];
  [title appendAttributedString:state_dot(colour)];
  [title appendAttributedString:text_piece(string_from(g_status), nil, font)];
  return title;
}

NSAttributedString *row_title(const tdgui::Component &component, bool running) {
  NSColor *colour = running ? [NSColor systemGreenColor] : [NSColor systemRedColor];
  NSString *state = [NSString stringWithFormat:@"   %@", running ? @"running" : @"stopped"];
  NSFont *small = [NSFont menuFontOfSize:[NSFont smallSystemFontSize]];
  NSMutableAttributedString *title = [[NSMutableAttributedString alloc] init];
  [title appendAttributedString:state_dot(colour)];
  [title appendAttributedString:text_piece(string_from(component.label), nil,
                                           [NSFont menuFontOfSize:0])];
  [title appendAttributedString:text_piece(state, [NSColor secondaryLabelColor], small)];
  return title;
}

// --- Menu items: complete before they are added to a menu ---------------------------------------

NSMenuItem *plain_item(NSString *title) {
  return [[NSMenuItem alloc] initWithTitle:title action:nullptr keyEquivalent:@""];
}

NSMenuItem *action_item(NSString *title, SEL action, NSString *key, id target) {
  NSMenuItem *item = [[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:key];
  [item setTarget:target];
  return item;
}

NSMenuItem *component_action(NSString *title, SEL action, id target,
                             const tdgui::Component &component, bool enabled) {
  NSMenuItem *item = action_item(title, action, @"", target);
  [item setRepresentedObject:string_from(component.name)];
  [item setEnabled:enabled];
  return item;
}

NSMenuItem *header_item() {
  NSMenuItem *item = plain_item(@"");
  [item setAttributedTitle:header_title()];
  [item setEnabled:NO];
  return item;
}

NSMenuItem *address_item() {
  NSMenuItem *item = plain_item(string_from(g_url));
  [item setEnabled:NO];
  return item;
}

NSMenuItem *component_row(const tdgui::Component &component, id target) {
  const bool running = row_is_running(component);
  NSMenu *submenu = [[NSMenu alloc] init];
  [submenu
      addItem:component_action(@"Start", @selector(startComponent:), target, component, !running)];
  [submenu
      addItem:component_action(@"Stop", @selector(stopComponent:), target, component, running)];
  [submenu addItem:component_action(@"Restart", @selector(restartComponent:), target, component,
                                    running)];
  NSMenuItem *row = plain_item(string_from(component.label));
  [row setAttributedTitle:row_title(component, running)];
  [row setSubmenu:submenu];
  return row;
}

NSMenuItem *all_components_item(id target) {
  NSMenu *submenu = [[NSMenu alloc] init];
  [submenu addItem:action_item(@"Start All", @selector(startAll:), @"", target)];
  [submenu addItem:action_item(@"Stop All", @selector(stopAll:), @"", target)];
  [submenu addItem:action_item(@"Restart All", @selector(restartAll:), @"", target)];
  NSMenuItem *item = plain_item(@"All Components");
  [item setSubmenu:submenu];
  return item;
}

NSMenuItem *open_at_launch_item(id target) {
  NSMenuItem *item =
      action_item(@"Open Dashboard at Launch", @selector(toggleOpenAtLaunch:), @"", target);
  const bool on = g_ctl.open_browser_pref && g_ctl.open_browser_pref();
  [item setState:on ? NSControlStateValueOn : NSControlStateValueOff];
  return item;
}

void add_separator(NSMenu *menu) {
  [menu addItem:[NSMenuItem separatorItem]];
}

void add_status_items(NSMenu *menu, id target) {
  [menu addItem:header_item()];
  [menu addItem:address_item()];
  add_separator(menu);
  [menu addItem:action_item(@"Open Dashboard", @selector(openDashboard:), @"o", target)];
  [menu addItem:action_item(@"Copy Dashboard Address", @selector(copyUrl:), @"c", target)];
  add_separator(menu);
}

void add_component_items(NSMenu *menu, id target) {
  for (const tdgui::Component &component : g_components) {
    [menu addItem:component_row(component, target)];
  }
  add_separator(menu);
  [menu addItem:all_components_item(target)];
}

// The double separators are intended: they put more space around the settings and the quit item.
void add_application_items(NSMenu *menu, id target) {
  add_separator(menu);
  add_separator(menu);
  [menu addItem:action_item(@"Settings…", @selector(openSettings:), @",", target)];
  [menu addItem:open_at_launch_item(target)];
  add_separator(menu);
  add_separator(menu);
  [menu addItem:action_item(@"Quit Tandrel", @selector(quitNow:), @"q", target)];
}

// --- Ports dialog -------------------------------------------------------------------------------

void add_label(NSView *view, NSString *text, NSRect frame) {
  NSTextField *label = [NSTextField labelWithString:text];
  [label setFrame:frame];
  [view addSubview:label];
}

NSTextField *add_port_field(NSView *view, int port, NSRect frame) {
  NSTextField *field = [[NSTextField alloc] initWithFrame:frame];
  [field setStringValue:[NSString stringWithFormat:@"%d", port]];
  [view addSubview:field];
  return field;
}

PortsForm make_ports_form(Ports ports) {
  NSView *view = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, 280, 58)];
  add_label(view, @"Dashboard port", NSMakeRect(0, 32, 130, 20));
  NSTextField *http = add_port_field(view, ports.http, NSMakeRect(136, 30, 80, 22));
  add_label(view, @"Control port", NSMakeRect(0, 4, 130, 20));
  NSTextField *udp = add_port_field(view, ports.udp, NSMakeRect(136, 2, 80, 22));
  return {view, http, udp};
}

NSAlert *make_settings_alert(NSView *form) {
  NSAlert *alert = [[NSAlert alloc] init];
  [alert setMessageText:@"Tandrel Settings"];
  [alert setInformativeText:@"Changing a port restarts the hub and reconnects the sender and "
                            @"receiver. Routing is kept."];
  [alert addButtonWithTitle:@"Apply"];
  [alert addButtonWithTitle:@"Cancel"];
  [alert setAccessoryView:form];
  return alert;
}

/// A menu-bar application is rarely active, and its alert would open behind other windows.
NSModalResponse run_in_front(NSAlert *alert) {
  [NSApp activateIgnoringOtherApps:YES];
  return [alert runModal];
}

void warn_ports_refused(const std::string &error) {
  NSAlert *alert = [[NSAlert alloc] init];
  [alert setAlertStyle:NSAlertStyleWarning];
  [alert setMessageText:@"Could not change the ports"];
  [alert setInformativeText:string_from(error)];
  [alert addButtonWithTitle:@"OK"];
  run_in_front(alert);
}

void apply_ports(Ports current, Ports wanted) {
  if (wanted.udp == current.udp && wanted.http == current.http) {
    return;
  }
  if (!g_ctl.set_ports) {
    return;
  }
  std::string error;
  if (!g_ctl.set_ports(wanted.http, wanted.udp, error)) {
    warn_ports_refused(error);
  }
}

} // namespace

@interface TDStatusController : NSObject <NSMenuDelegate> {
  NSStatusItem *_item;
}

@property (strong) NSStatusItem *item;

@end

@implementation TDStatusController

@synthesize item = _item;

- (void)openDashboard:(id)sender {
  [[NSWorkspace sharedWorkspace] openURL:[NSURL URLWithString:string_from(g_url)]];
}

- (void)copyUrl:(id)sender {
  NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
  [pasteboard clearContents];
  [pasteboard setString:string_from(g_url) forType:NSPasteboardTypeString];
}

- (void)quitNow:(id)sender {
  if (g_ctl.quit) {
    g_ctl.quit();
  }
  [NSApp terminate:nil];
}

- (void)startComponent:(id)sender {
  if (g_ctl.start) {
    g_ctl.start(component_name(sender));
  }
}

- (void)stopComponent:(id)sender {
  if (g_ctl.stop) {
    g_ctl.stop(component_name(sender));
  }
}

- (void)restartComponent:(id)sender {
  if (g_ctl.restart) {
    g_ctl.restart(component_name(sender));
  }
}

- (void)openSettings:(id)sender {
  const Ports current = current_ports();
  const PortsForm form = make_ports_form(current);
  if (run_in_front(make_settings_alert(form.view)) != NSAlertFirstButtonReturn) {
    return;
  }
  apply_ports(current, {[form.http intValue], [form.udp intValue]});
}

- (void)toggleOpenAtLaunch:(id)sender {
  if (g_ctl.open_browser_pref && g_ctl.set_open_browser_pref) {
    g_ctl.set_open_browser_pref(!g_ctl.open_browser_pref());
  }
}

- (void)startAll:(id)sender {
  if (!g_ctl.start) {
    return;
  }
  for (const tdgui::Component &component : g_components) {
    g_ctl.start(component.name);
  }
}

- (void)stopAll:(id)sender {
  if (!g_ctl.stop) {
    return;
  }
  for (auto component = g_components.rbegin(); component != g_components.rend(); ++component) {
    g_ctl.stop(component->name);
  }
}

- (void)restartAll:(id)sender {
  [self stopAll:nil];
  [self startAll:nil];
}

- (void)menuNeedsUpdate:(NSMenu *)menu {
  [menu removeAllItems];
  add_status_items(menu, self);
  add_component_items(menu, self);
  add_application_items(menu, self);
}

@end

namespace {

void install_status_item(TDStatusController *controller) {
  [controller
      setItem:[[NSStatusBar systemStatusBar] statusItemWithLength:NSVariableStatusItemLength]];
  NSStatusItem *item = [controller item];
  [[item button] setImage:tdMenuBarIcon()];
  [[item button] setToolTip:@"Tandrel"];
  NSMenu *menu = [[NSMenu alloc] init];
  [menu setDelegate:controller];
  [item setMenu:menu];
}

} // namespace

namespace tdgui {

void run(const GuiConfig &config) {
  g_url = config.url;
  g_status = config.status;
  g_components = config.components;
  g_ctl = callbacks_of(config);
  if (!g_ctl.quit) {
    g_ctl.quit = config.quit_fallback;
  }

  @autoreleasepool {
    [NSApplication sharedApplication];
    [NSApp setActivationPolicy:NSApplicationActivationPolicyAccessory];
    install_status_item([[TDStatusController alloc] init]);
    [NSApp run];
  }
}

void alert(const std::string &title, const std::string &text) {
  @autoreleasepool {
    [NSApplication sharedApplication];
    NSAlert *alert = [[NSAlert alloc] init];
    [alert setAlertStyle:NSAlertStyleCritical];
    [alert setMessageText:string_from(title)];
    [alert setInformativeText:string_from(text)];
    [alert addButtonWithTitle:@"OK"];
    [alert runModal];
  }
}

} // namespace tdgui
