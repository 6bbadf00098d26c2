#include "runtime/replace_method.h"

namespace {

/// +load runs before this file's namespace-scope objects are made.
std::vector<std::string> &missing() {
  static std::vector<std::string> s_missing;
  return s_missing;
}

std::string method_name(Class cls, SEL selector) {
  const bool class_method = cls != Nil && class_isMetaClass(cls);
  const std::string class_name = cls == Nil ? "unknown class" : class_getName(cls);
  return (class_method ? "+[" : "-[") + class_name + " " + sel_getName(selector) + "]";
}

} // namespace

namespace td {

IMP replace_method(Class cls, SEL selector, IMP imp) {
  Method method = class_getInstanceMethod(cls, selector);
  if (!method) {
    missing().push_back(method_name(cls, selector));
    return nullptr;
  }
  IMP previous = method_getImplementation(method);
  // class_replaceMethod of GCC's runtime would replace an inherited method in the superclass.
  if (!class_addMethod(cls, selector, imp, method_getTypeEncoding(method))) {
    method_setImplementation(method, imp);
  }
  return previous;
}

const std::vector<std::string> &missing_methods() {
  return missing();
}

} // namespace td
