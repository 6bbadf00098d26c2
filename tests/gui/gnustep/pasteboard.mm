// The general pasteboard, in memory and for strings only: GNUstep's are kept by a server, which it
// would start as a child of the process. Its class is not derived from NSPasteboard, whose methods
// return other types in other versions of GNUstep.

#import <AppKit/AppKit.h>

@interface TDPasteboard : NSObject {
  NSMutableDictionary *_strings; // by their types
  NSInteger _changes;
}
@end

@implementation TDPasteboard

- (instancetype)init {
  if ((self = [super init])) {
    _strings = [[NSMutableDictionary alloc] init];
  }
  return self;
}

- (void)dealloc {
  [_strings release];
  [super dealloc];
}

- (NSInteger)declareTypes:(NSArray *)types owner:(id)owner {
  [_strings removeAllObjects];
  for (NSString *type in types) {
    [_strings setObject:@"" forKey:type];
  }
  return ++_changes;
}

- (NSInteger)clearContents {
  return [self declareTypes:[NSArray array] owner:nil];
}

- (NSArray *)types {
  return [_strings allKeys];
}

/// Declares the type too, as AppKit's does.
- (BOOL)setString:(NSString *)string forType:(NSString *)type {
  [_strings setObject:string forKey:type];
  return YES;
}

- (NSString *)stringForType:(NSString *)type {
  return [_strings objectForKey:type];
}

@end

@interface NSPasteboard (TDGeneral)
@end

@implementation NSPasteboard (TDGeneral)

/// There are no others; a text field would use one for its selection.
+ (NSPasteboard *)pasteboardWithName:(NSString *)name {
  static id general = [[TDPasteboard alloc] init];
  return [name isEqualToString:NSGeneralPboard] ? general : nil;
}

@end
