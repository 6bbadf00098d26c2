// Images that call a block each time they are drawn, which GNUstep lacks.

#import <AppKit/AppKit.h>
#include <Block.h>

using TDDrawingHandler = BOOL (^)(NSRect frame);

@interface TDDrawnImageRep : NSImageRep {
  TDDrawingHandler _handler;
}
- (instancetype)initWithSize:(NSSize)size handler:(TDDrawingHandler)handler;
@end

@implementation TDDrawnImageRep

- (instancetype)initWithSize:(NSSize)size handler:(TDDrawingHandler)handler {
  if ((self = [super init])) {
    [self setSize:size];
    [self setAlpha:YES];
    _handler = Block_copy(handler); // to this runtime a block is not an object: -copy would crash
  }
  return self;
}

- (void)dealloc {
  Block_release(_handler);
  [super dealloc];
}

- (id)copyWithZone:(NSZone *)zone {
  return [[[self class] allocWithZone:zone] initWithSize:[self size] handler:_handler];
}

- (BOOL)draw {
  const NSSize size = [self size];
  return _handler(NSMakeRect(0, 0, size.width, size.height));
}

@end

@implementation NSImage (TDMissing)

+ (NSImage *)imageWithSize:(NSSize)size
                   flipped:(BOOL)flipped
            drawingHandler:(BOOL (^)(NSRect frame))handler {
  NSImage *image = [[[self alloc] initWithSize:size] autorelease];
  TDDrawnImageRep *rep = [[TDDrawnImageRep alloc] initWithSize:size handler:handler];
  [image setFlipped:flipped];
  [image addRepresentation:rep];
  [rep release];
  return image;
}

@end
