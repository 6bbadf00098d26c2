#include "runtime/attached_object.h"

#include "runtime/replace_method.h"

#include <map>

namespace {

std::map<id, id> g_attached;             // owner -> value, retained
std::map<Class, IMP> g_replaced_dealloc; // the dealloc that dealloc_and_detach replaced

void detach(id owner) {
  auto entry = g_attached.find(owner);
  if (entry == g_attached.end()) {
    return;
  }
  id value = entry->second;
  g_attached.erase(entry);
  [value release];
}

void dealloc_and_detach(id owner, SEL selector) {
  detach(owner);
  for (Class cls = [owner class]; cls != Nil; cls = class_getSuperclass(cls)) {
    auto entry = g_replaced_dealloc.find(cls);
    if (entry != g_replaced_dealloc.end()) {
      return reinterpret_cast<void (*)(id, SEL)>(entry->second)(owner, selector);
    }
  }
}

void replace_dealloc(Class cls) {
  if (g_replaced_dealloc.count(cls) != 0) {
    return;
  }
  g_replaced_dealloc[cls] =
      td::replace_method(cls, @selector(dealloc), reinterpret_cast<IMP>(dealloc_and_detach));
}

} // namespace

namespace td {

void attach_object(id owner, id value) {
  [value retain];
  detach(owner);
  if (value == nil) {
    return;
  }
  replace_dealloc([owner class]);
  g_attached[owner] = value;
}

id attached_object(id owner) {
  auto entry = g_attached.find(owner);
  return entry == g_attached.end() ? nil : entry->second;
}

} // namespace td
