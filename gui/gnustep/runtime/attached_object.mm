#include "runtime/attached_object.h"

#include "runtime/replace_method.h"

#include <map>

namespace {

std::map<id, id> g_attached;          // owner -> value, retained
std::map<Class, IMP> g_plain_dealloc; // what a class's dealloc was before it also forgot the value

void forget(id owner) {
  auto entry = g_attached.find(owner);
  if (entry == g_attached.end()) {
    return;
  }
  id value = entry->second;
  g_attached.erase(entry);
  [value release];
}

void dealloc_and_forget(id owner, SEL selector) {
  forget(owner);
  for (Class cls = [owner class]; cls != Nil; cls = class_getSuperclass(cls)) {
    auto entry = g_plain_dealloc.find(cls);
    if (entry != g_plain_dealloc.end()) {
      return reinterpret_cast<void (*)(id, SEL)>(entry->second)(owner, selector);
    }
  }
}

void watch_dealloc(Class cls) {
  if (g_plain_dealloc.count(cls) != 0) {
    return;
  }
  g_plain_dealloc[cls] =
      td::replace_method(cls, @selector(dealloc), reinterpret_cast<IMP>(dealloc_and_forget));
}

} // namespace

namespace td {

void attach_object(id owner, id value) {
  [value retain];
  forget(owner);
  if (value == nil) {
    return;
  }
  watch_dealloc([owner class]);
  g_attached[owner] = value;
}

id attached_object(id owner) {
  auto entry = g_attached.find(owner);
  return entry == g_attached.end() ? nil : entry->second;
}

} // namespace td
