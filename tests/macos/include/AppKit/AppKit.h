/// What the menu-bar interface and its tests use of this framework, for compiling them without a
/// Mac, and some newer calls that they could be tempted to use. The oldest macOS that has a call is
/// given where it is newer than 10.9.
#pragma once

#import <Foundation/Foundation.h>

#define APPKIT_EXTERN extern "C"

@class NSMenu;
@class NSMenuItem;

// --- Drawing -------------------------------------------------------------------------------------

APPKIT_EXTERN NSString *const NSFontAttributeName;
APPKIT_EXTERN NSString *const NSForegroundColorAttributeName;
APPKIT_EXTERN NSString *const NSCalibratedRGBColorSpace;
APPKIT_EXTERN void NSRectFill(NSRect rect);

@interface NSColor : NSObject
@property (class, readonly) NSColor *systemRedColor API_AVAILABLE(macos(10.10));
@property (class, readonly) NSColor *systemGreenColor API_AVAILABLE(macos(10.10));
@property (class, readonly) NSColor *systemOrangeColor API_AVAILABLE(macos(10.10));
@property (class, readonly) NSColor *secondaryLabelColor API_AVAILABLE(macos(10.10));
@property (class, readonly) NSColor *controlAccentColor API_AVAILABLE(macos(10.14));
@property (class, readonly) NSColor *blackColor;
@property (readonly) CGFloat redComponent;
@property (readonly) CGFloat greenComponent;
@property (readonly) CGFloat blueComponent;
+ (NSColor *)colorWithSRGBRed:(CGFloat)red
                        green:(CGFloat)green
                         blue:(CGFloat)blue
                        alpha:(CGFloat)alpha;
- (void)set;
- (void)setFill;
@end

@interface NSColorSpace : NSObject
@property (class, readonly) NSColorSpace *sRGBColorSpace;
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

@interface NSBitmapImageRep : NSObject
- (instancetype)initWithBitmapDataPlanes:(unsigned char **)planes
                              pixelsWide:(NSInteger)width
                              pixelsHigh:(NSInteger)height
                           bitsPerSample:(NSInteger)bits
                         samplesPerPixel:(NSInteger)samples
                                hasAlpha:(BOOL)alpha
                                isPlanar:(BOOL)planar
                          colorSpaceName:(NSString *)name
                             bytesPerRow:(NSInteger)row_bytes
                            bitsPerPixel:(NSInteger)pixel_bits;
- (NSBitmapImageRep *)bitmapImageRepByRetaggingWithColorSpace:(NSColorSpace *)space;
- (NSColor *)colorAtX:(NSInteger)x y:(NSInteger)y;
@end

@interface NSGraphicsContext : NSObject
@property (class, strong) NSGraphicsContext *currentContext;
+ (NSGraphicsContext *)graphicsContextWithBitmapImageRep:(NSBitmapImageRep *)bitmap;
+ (void)saveGraphicsState;
+ (void)restoreGraphicsState;
@end

@interface NSImage : NSObject
@property NSSize size;
- (void)drawInRect:(NSRect)rect;
+ (NSImage *)imageWithSize:(NSSize)size
                   flipped:(BOOL)flipped
            drawingHandler:(BOOL (^)(NSRect rect))handler;
+ (NSImage *)imageWithSystemSymbolName:(NSString *)name
              accessibilityDescription:(NSString *)description API_AVAILABLE(macos(11.0));
@end

// --- Views ---------------------------------------------------------------------------------------

@class NSText;
@class NSView;

@interface NSResponder : NSObject
@end

@interface NSWindow : NSResponder
@property (strong) NSView *contentView;
@property (getter=isVisible, readonly) BOOL visible;
@property (readonly) NSInteger windowNumber;
@property (weak) NSView *initialFirstResponder;
- (BOOL)makeFirstResponder:(NSResponder *)responder;
- (void)orderOut:(id)sender;
@end

@interface NSView : NSResponder
@property (readonly, assign) NSWindow *window;
@property (copy) NSArray *subviews;
@property (readonly, assign) NSView *nextValidKeyView;
@property NSRect frame;
@property (copy) NSString *toolTip;
- (instancetype)initWithFrame:(NSRect)frame;
- (void)addSubview:(NSView *)view;
@end

@interface NSControl : NSView
@property (copy) NSString *stringValue;
@property int intValue;
@property (strong) id formatter;
- (NSText *)currentEditor;
- (void)performClick:(id)sender;
@end

@interface NSTextField : NSControl
@property (getter=isEditable) BOOL editable;
+ (instancetype)labelWithString:(NSString *)text API_AVAILABLE(macos(10.12));
@end

@interface NSButton : NSControl
@property (copy) NSString *title;
@property (copy) NSString *keyEquivalent;
@property (strong) NSImage *image;
@end

// --- Menus ---------------------------------------------------------------------------------------

using NSControlStateValue = NSInteger;
static const NSControlStateValue NSControlStateValueOff API_AVAILABLE(macos(10.13)) = 0;
static const NSControlStateValue NSControlStateValueOn API_AVAILABLE(macos(10.13)) = 1;

using NSEventModifierFlags = NSUInteger;
static const NSEventModifierFlags NSEventModifierFlagCommand API_AVAILABLE(macos(10.12)) = 1 << 20;

@interface NSMenuItem : NSObject <NSCopying>
@property (copy) NSString *title;
@property SEL action;
@property (copy) NSString *keyEquivalent;
@property NSEventModifierFlags keyEquivalentModifierMask;
@property (getter=isSeparatorItem, readonly) BOOL separatorItem;
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
@property BOOL autoenablesItems;
@property (readonly) NSInteger numberOfItems;
@property (copy) NSArray *itemArray;
- (NSMenuItem *)itemAtIndex:(NSInteger)index;
- (NSInteger)indexOfItem:(NSMenuItem *)item;
- (void)update;
- (void)performActionForItemAtIndex:(NSInteger)index;
- (void)submenuAction:(id)sender;
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
- (void)removeStatusItem:(NSStatusItem *)item;
@end

// --- The application -----------------------------------------------------------------------------

enum NSApplicationActivationPolicy : NSInteger {
  NSApplicationActivationPolicyRegular,
  NSApplicationActivationPolicyAccessory,
  NSApplicationActivationPolicyProhibited,
};

using NSEventType = NSUInteger; // an enumeration, with a fixed type as well
static const NSEventType NSEventTypeKeyDown API_AVAILABLE(macos(10.12)) = 10;
static const NSEventType NSEventTypeApplicationDefined API_AVAILABLE(macos(10.12)) = 15;

@interface NSEvent : NSObject <NSCopying>
+ (NSEvent *)otherEventWithType:(NSEventType)type
                       location:(NSPoint)location
                  modifierFlags:(NSEventModifierFlags)flags
                      timestamp:(NSTimeInterval)time
                   windowNumber:(NSInteger)window
                        context:(NSGraphicsContext *)unused
                        subtype:(short)subtype
                          data1:(NSInteger)data1
                          data2:(NSInteger)data2;
+ (NSEvent *)keyEventWithType:(NSEventType)type
                       location:(NSPoint)location
                  modifierFlags:(NSEventModifierFlags)flags
                      timestamp:(NSTimeInterval)time
                   windowNumber:(NSInteger)window
                        context:(NSGraphicsContext *)unused
                     characters:(NSString *)characters
    charactersIgnoringModifiers:(NSString *)plain
                      isARepeat:(BOOL)repeat
                        keyCode:(unsigned short)code;
@end

using NSModalResponse = NSInteger;
static const NSModalResponse NSModalResponseAbort = -1001;
APPKIT_EXTERN const NSRunLoopMode NSModalPanelRunLoopMode;
APPKIT_EXTERN const NSRunLoopMode NSEventTrackingRunLoopMode;

@interface NSApplication : NSResponder
@property (weak) id delegate;
@property (strong) NSMenu *mainMenu;
@property (readonly, copy) NSArray *windows;
@property (readonly, weak) NSWindow *modalWindow;
@property (getter=isRunning, readonly) BOOL running;
@property (class, readonly, strong) NSApplication *sharedApplication;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)activateIgnoringOtherApps:(BOOL)ignore;
- (void)activate API_AVAILABLE(macos(14.0));
- (void)run;
- (void)stop:(id)sender;
- (void)stopModalWithCode:(NSModalResponse)code;
- (void)terminate:(id)sender;
- (void)postEvent:(NSEvent *)event atStart:(BOOL)first;
- (BOOL)sendAction:(SEL)action to:(id)target from:(id)sender;
@end

APPKIT_EXTERN NSApplication *NSApp;

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
@property (readonly, copy) NSArray *buttons;
- (NSButton *)addButtonWithTitle:(NSString *)title;
- (NSModalResponse)runModal;
@end

@interface NSWorkspace : NSObject
@property (class, readonly, strong) NSWorkspace *sharedWorkspace;
- (BOOL)openURL:(NSURL *)url;
@end

APPKIT_EXTERN NSString *const NSPasteboardTypeString;
APPKIT_EXTERN NSString *const NSPasteboardTypeTIFF;

@interface NSPasteboard : NSObject
@property (class, readonly, strong) NSPasteboard *generalPasteboard;
@property (readonly, copy) NSArray *types;
- (NSInteger)clearContents;
- (NSInteger)declareTypes:(NSArray *)types owner:(id)owner;
- (NSString *)stringForType:(NSString *)type;
- (BOOL)setString:(NSString *)text forType:(NSString *)type;
@end
