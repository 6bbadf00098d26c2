#include "runtime/replace_method.h"

#include <cstdio>
#include <cstdlib>

namespace td {

IMP replace_method(Class cls, SEL selector, IMP imp) {
  Method method = class_getInstanceMethod(cls, selector);
  if (!method) {
    std::fprintf(stderr, "tdgui: this GNUstep has no -[%s %s]\n", class_getName(cls),
                 sel_getName(selector));
    std::abort();
  }
  IMP previous = method_getImplementation(method);
  class_replaceMethod(cls, selector, imp, method_getTypeEncoding(method));
  return previous;
}

} // namespace td
