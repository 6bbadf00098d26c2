/// Replacing a method of a GNUstep class while keeping the old one to call.
#pragma once

#import <Foundation/Foundation.h>
#include <objc/runtime.h>

namespace td {

/// Makes `imp` the instance method `selector` of `cls` (pass a metaclass for a class method) and
/// returns the implementation it had, its own or inherited. Does not initialise the class. Ends the
/// process when the class has no such method: the layer was written for another GNUstep then.
IMP replace_method(Class cls, SEL selector, IMP imp);

} // namespace td
