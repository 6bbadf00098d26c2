/// Replaces a method of a GNUstep class.
#pragma once

#import <Foundation/Foundation.h>
#include <objc/runtime.h>

namespace td {

/// Makes `imp` the instance method `selector` of `cls` (pass a metaclass for a class method) and
/// returns the previous implementation, which may be inherited. Does not initialise the class.
/// Aborts the process when the class has no such method, as in another version of GNUstep.
IMP replace_method(Class cls, SEL selector, IMP imp);

} // namespace td
