/// What the menu-bar interface and its tests use of this framework, for compiling it without a Mac.
/// The oldest macOS that has a call is given where it is newer than 10.9.
#pragma once

#include <objc/NSObject.h>
#include <objc/objc.h>
#include <os/availability.h>

#define FOUNDATION_EXPORT extern "C"

using CGFloat = double;
using NSTimeInterval = double;

struct CGPoint {
  CGFloat x;
  CGFloat y;
};
struct CGSize {
  CGFloat width;
  CGFloat height;
};
struct CGRect {
  CGPoint origin;
  CGSize size;
};
using NSPoint = CGPoint;
using NSSize = CGSize;
using NSRect = CGRect;

inline NSSize NSMakeSize(CGFloat width, CGFloat height) {
  return {width, height};
}
inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  return {{x, y}, {width, height}};
}
inline CGFloat NSMidX(NSRect rect) {
  return rect.origin.x + rect.size.width / 2;
}
inline CGFloat NSMidY(NSRect rect) {
  return rect.origin.y + rect.size.height / 2;
}
inline CGFloat NSWidth(NSRect rect) {
  return rect.size.width;
}
inline CGFloat NSHeight(NSRect rect) {
  return rect.size.height;
}
FOUNDATION_EXPORT const NSPoint NSZeroPoint;
FOUNDATION_EXPORT BOOL NSEqualRects(NSRect one, NSRect other);
FOUNDATION_EXPORT BOOL NSEqualSizes(NSSize one, NSSize other);

struct _NSRange {
  NSUInteger location;
  NSUInteger length;
};
using NSRange = _NSRange;
using NSRangePointer = NSRange *;

inline NSRange NSMakeRange(NSUInteger location, NSUInteger length) {
  return {location, length};
}

@class NSString;

FOUNDATION_EXPORT NSString *NSStringFromSelector(SEL selector);
FOUNDATION_EXPORT Class NSClassFromString(NSString *name);

@protocol NSCopying
@end

struct NSFastEnumerationState {
  unsigned long state;
  id *itemsPtr;
  unsigned long *mutationsPtr;
  unsigned long extra[5];
};

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState *)state
                                  objects:(id[])buffer
                                    count:(NSUInteger)count;
@end

@interface NSString : NSObject <NSCopying>
@property (readonly) const char *UTF8String;
@property (readonly) NSUInteger length;
- (BOOL)isEqualToString:(NSString *)other;
- (NSString *)substringWithRange:(NSRange)range;
+ (instancetype)stringWithUTF8String:(const char *)bytes;
+ (instancetype)stringWithFormat:(NSString *)format,
                                 ... __attribute__((format(__NSString__, 1, 2)));
@end

@interface NSArray : NSObject <NSCopying, NSFastEnumeration>
@property (readonly) NSUInteger count;
+ (instancetype)array;
+ (instancetype)arrayWithObject:(id)object;
+ (instancetype)arrayWithObjects:(id)first, ... __attribute__((sentinel(0, 1)));
- (id)objectAtIndex:(NSUInteger)index;
@end

@interface NSURL : NSObject <NSCopying>
@property (readonly, copy) NSString *absoluteString;
+ (instancetype)URLWithString:(NSString *)text;
@end

@interface NSDictionary : NSObject <NSCopying>
@property (readonly) NSUInteger count;
- (id)objectForKey:(id)key;
@end

@interface NSMutableDictionary : NSDictionary
+ (instancetype)dictionary;
- (void)setObject:(id)object forKey:(id<NSCopying>)key;
@end

@interface NSAttributedString : NSObject <NSCopying>
@property (readonly, copy) NSString *string;
@property (readonly) NSUInteger length;
- (NSDictionary *)attributesAtIndex:(NSUInteger)index effectiveRange:(NSRangePointer)range;
- (instancetype)initWithString:(NSString *)text attributes:(NSDictionary *)attributes;
@end

@interface NSMutableAttributedString : NSAttributedString
- (void)appendAttributedString:(NSAttributedString *)text;
@end

@interface NSDate : NSObject <NSCopying>
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)seconds;
@end

@interface NSThread : NSObject
@property (class, readonly) BOOL isMainThread;
@end

using NSRunLoopMode = NSString *;
FOUNDATION_EXPORT const NSRunLoopMode NSDefaultRunLoopMode;

@interface NSTimer : NSObject
@property (readonly, strong) id userInfo;
+ (NSTimer *)timerWithTimeInterval:(NSTimeInterval)seconds
                            target:(id)target
                          selector:(SEL)selector
                          userInfo:(id)info
                           repeats:(BOOL)repeats;
+ (NSTimer *)scheduledTimerWithTimeInterval:(NSTimeInterval)seconds
                                     target:(id)target
                                   selector:(SEL)selector
                                   userInfo:(id)info
                                    repeats:(BOOL)repeats;
- (void)invalidate;
@end

@interface NSRunLoop : NSObject
@property (class, readonly, strong) NSRunLoop *currentRunLoop;
- (void)addTimer:(NSTimer *)timer forMode:(NSRunLoopMode)mode;
- (BOOL)runMode:(NSRunLoopMode)mode beforeDate:(NSDate *)limit;
@end
