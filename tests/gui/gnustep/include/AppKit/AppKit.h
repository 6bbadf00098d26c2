// GNUstep's AppKit and the declarations that it lacks. The include path finds this header before
// GNUstep's own, so that code written for AppKit compiles unchanged.
#pragma once

#include_next <AppKit/AppKit.h>

enum {
  NSAlertStyleWarning = NSWarningAlertStyle,
  NSAlertStyleInformational = NSInformationalAlertStyle,
  NSAlertStyleCritical = NSCriticalAlertStyle
};

// Macros, because newer versions of GNUstep have the names too.
#define NSEventTypeApplicationDefined NSApplicationDefined
#define NSEventTypeKeyDown NSKeyDown
#define NSEventModifierFlagCommand NSCommandKeyMask

@interface NSApplication (TDMissing)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end

@interface NSMenu (TDMissing)
- (void)removeAllItems;
@end

@interface NSPasteboard (TDMissing)
- (NSInteger)clearContents;
@end

@interface NSTextField (TDMissing)
+ (instancetype)labelWithString:(NSString *)text;
@end

@interface NSImage (TDMissing)
+ (NSImage *)imageWithSize:(NSSize)size
                   flipped:(BOOL)flipped
            drawingHandler:(BOOL (^)(NSRect frame))handler;
@end

@interface NSAlert (TDMissing)
- (NSView *)accessoryView;
- (void)setAccessoryView:(NSView *)view;
@end

@interface NSStatusItem (TDMissing)
- (NSStatusBarButton *)button;
@end
