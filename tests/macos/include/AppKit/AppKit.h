/// What the menu-bar interface uses of this framework, for compiling it without a Mac, and some
/// newer calls that it could be tempted to use. The oldest macOS that has a call is given where it
/// is newer than 10.9.
#pragma once

#import <Foundation/Foundation.h>

#define APPKIT_EXTERN extern "C"

@class NSMenu;
@class NSMenuItem;

// --- Drawing -------------------------------------------------------------------------------------

APPKIT_EXTERN NSString *const NSFontAttributeName;
APPKIT_EXTERN NSString *const NSForegroundColorAttributeName;

@interface NSColor : NSObject
@property (class, readonly) NSColor *systemRedColor API_AVAILABLE(macos(10.10));
@property (class, readonly) NSColor *systemGreenColor API_AVAILABLE(macos(10.10));
@property (class, readonly) NSColor *systemOrangeColor API_AVAILABLE(macos(10.10));
@property (class, readonly) NSColor *secondaryLabelColor API_AVAILABLE(macos(10.10));
@property (class, readonly) NSColor *controlAccentColor API_AVAILABLE(macos(10.14));
+ (NSColor *)colorWithSRGBRed:(CGFloat)red
                        green:(CGFloat)green
                         blue:(CGFloat)blue
                        alpha:(CGFloat)alpha;
- (void)setFill;
@end

@interface NSFont : NSObject
@property (class, readonly) CGFloat systemFontSize;
@property (class, readonly) CGFloat smallSystemFontSize;
+ (NSFont *)boldSystemFontOfSize:(CGFloat)size;
+ (NSFont *)menuFontOfSize:(CGFloat)size;
+ (NSFont *)monospacedSystemFontOfSize:(CGFloat)size
                                weight:(CGFloat)weight API_AVAILABLE(macos(10.15));
@end

@interface NSBezierPath : NSObject
+ (NSBezierPath *)bezierPathWithRoundedRect:(NSRect)rect
                                    xRadius:(CGFloat)x_radius
                                    yRadius:(CGFloat)y_radius;
- (void)fill;
@end

@interface NSImage : NSObject
+ (NSImage *)imageWithSize:(NSSize)size
                   flipped:(BOOL)flipped
            drawingHandler:(BOOL (^)(NSRect rect))handler;
+ (NSImage *)imageWithSystemSymbolName:(NSString *)name
              accessibilityDescription:(NSString *)description API_AVAILABLE(macos(11.0));
@end

// --- Views ---------------------------------------------------------------------------------------

@interface NSResponder : NSObject
@end

@interface NSView : NSResponder
@property NSRect frame;
@property (copy) NSString *toolTip;
- (instancetype)initWithFrame:(NSRect)frame;
- (void)addSubview:(NSView *)view;
@end

@interface NSControl : NSView
@property (copy) NSString *stringValue;
@property int intValue;
@end

@interface NSTextField : NSControl
+ (instancetype)labelWithString:(NSString *)text API_AVAILABLE(macos(10.12));
@end

@interface NSButton : NSControl
@property (strong) NSImage *image;
@end

// --- Menus ---------------------------------------------------------------------------------------

using NSControlStateValue = NSInteger;
static const NSControlStateValue NSControlStateValueOff API_AVAILABLE(macos(10.13)) = 0;
static const NSControlStateValue NSControlStateValueOn API_AVAILABLE(macos(10.13)) = 1;

@interface NSMenuItem : NSObject <NSCopying>
@property (weak) id target;
@property (strong) id representedObject;
@property (getter=isEnabled) BOOL enabled;
@property (copy) NSAttributedString *attributedTitle;
@property (strong) NSMenu *submenu;
@property NSControlStateValue state;
+ (NSMenuItem *)separatorItem;
+ (instancetype)sectionHeaderWithTitle:(NSString *)title API_AVAILABLE(macos(14.0));
- (instancetype)initWithTitle:(NSString *)title action:(SEL)action keyEquivalent:(NSString *)key;
@end

@protocol NSMenuDelegate <NSObject>
@optional
- (void)menuNeedsUpdate:(NSMenu *)menu;
@end

@interface NSMenu : NSObject <NSCopying>
@property (weak) id<NSMenuDelegate> delegate;
- (void)addItem:(NSMenuItem *)item;
- (void)removeAllItems;
@end

@interface NSStatusBarButton : NSButton
@end

static const CGFloat NSVariableStatusItemLength = -1.0;

@interface NSStatusItem : NSObject
@property (readonly, strong) NSStatusBarButton *button API_AVAILABLE(macos(10.10));
@property (strong) NSMenu *menu;
@end

@interface NSStatusBar : NSObject
@property (class, readonly, strong) NSStatusBar *systemStatusBar;
- (NSStatusItem *)statusItemWithLength:(CGFloat)length;
@end

// --- The application -----------------------------------------------------------------------------

enum NSApplicationActivationPolicy : NSInteger {
  NSApplicationActivationPolicyRegular,
  NSApplicationActivationPolicyAccessory,
  NSApplicationActivationPolicyProhibited,
};

@interface NSApplication : NSResponder
@property (class, readonly, strong) NSApplication *sharedApplication;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)activateIgnoringOtherApps:(BOOL)ignore;
- (void)activate API_AVAILABLE(macos(14.0));
- (void)run;
- (void)terminate:(id)sender;
@end

APPKIT_EXTERN NSApplication *NSApp;

using NSModalResponse = NSInteger;
static const NSModalResponse NSAlertFirstButtonReturn = 1000;

enum NSAlertStyle : NSUInteger {
  NSAlertStyleWarning,
  NSAlertStyleInformational,
  NSAlertStyleCritical,
};

@interface NSAlert : NSObject
@property (copy) NSString *messageText;
@property (copy) NSString *informativeText;
@property NSAlertStyle alertStyle;
@property (strong) NSView *accessoryView;
- (NSButton *)addButtonWithTitle:(NSString *)title;
- (NSModalResponse)runModal;
@end

@interface NSWorkspace : NSObject
@property (class, readonly, strong) NSWorkspace *sharedWorkspace;
- (BOOL)openURL:(NSURL *)url;
@end

APPKIT_EXTERN NSString *const NSPasteboardTypeString;

@interface NSPasteboard : NSObject
@property (class, readonly, strong) NSPasteboard *generalPasteboard;
- (NSInteger)clearContents;
- (BOOL)setString:(NSString *)text forType:(NSString *)type;
@end
