/// Replaces a method of a GNUstep class.
#pragma once

#include <string>
#include <vector>

#import <Foundation/Foundation.h>
#include <objc/runtime.h>

namespace td {

/// Makes `imp` the instance method `selector` of `cls` (pass a metaclass for a class method) and
/// returns the previous implementation, which may be inherited. Does not initialise the class. When
/// there is no such method or no such class (Nil), as in another version of GNUstep, changes
/// nothing, adds to missing_methods() and returns null; `imp` is then never called. Main thread
/// only; may be called by +load.
IMP replace_method(Class cls, SEL selector, IMP imp);

/// What replace_method has not found in this process, in order, as in "-[NSAlert runModal]".
/// Main thread only.
const std::vector<std::string> &missing_methods();

} // namespace td
