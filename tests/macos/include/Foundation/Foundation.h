/// What the menu-bar interface uses of this framework, for compiling it without a Mac. The oldest
/// macOS that has a call is given where it is newer than 10.9.
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

@protocol NSCopying
@end

@interface NSString : NSObject <NSCopying>
@property (readonly) const char *UTF8String;
+ (instancetype)stringWithUTF8String:(const char *)bytes;
+ (instancetype)stringWithFormat:(NSString *)format,
                                 ... __attribute__((format(__NSString__, 1, 2)));
@end

@interface NSURL : NSObject <NSCopying>
+ (instancetype)URLWithString:(NSString *)text;
@end

@interface NSDictionary : NSObject <NSCopying>
@end

@interface NSMutableDictionary : NSDictionary
+ (instancetype)dictionary;
- (void)setObject:(id)object forKey:(id<NSCopying>)key;
@end

@interface NSAttributedString : NSObject <NSCopying>
- (instancetype)initWithString:(NSString *)text attributes:(NSDictionary *)attributes;
@end

@interface NSMutableAttributedString : NSAttributedString
- (void)appendAttributedString:(NSAttributedString *)text;
@end
