// Replacing methods, and what happens where there is nothing to replace.

#include "runtime/replace_method.h"

#include <algorithm>

#include <gtest/gtest.h>

@interface GuiTestReplaced : NSObject
- (int)number;
@end

@implementation GuiTestReplaced
- (int)number {
  return 1;
}
@end

@interface GuiTestInheriting : GuiTestReplaced
@end

@implementation GuiTestInheriting
@end

namespace {

using Number = int (*)(id, SEL);

IMP g_number;

int add_ten(id object, SEL selector) {
  return 10 + reinterpret_cast<Number>(g_number)(object, selector);
}

void never_called(id /*object*/, SEL /*selector*/) {
  FAIL();
}

int number_of(Class cls) {
  return [[[[cls alloc] init] autorelease] number];
}

int times_missing(const std::string &method) {
  const auto &missing = td::missing_methods();
  return static_cast<int>(std::count(missing.begin(), missing.end(), method));
}

} // namespace

TEST(ReplaceMethod, ReturnsThePreviousImplementationEvenIfInherited) {
  @autoreleasepool {
    g_number = td::replace_method([GuiTestInheriting class], @selector(number),
                                  reinterpret_cast<IMP>(add_ten));
    EXPECT_EQ(number_of([GuiTestInheriting class]), 11);
    EXPECT_EQ(number_of([GuiTestReplaced class]), 1);
  }
}

TEST(ReplaceMethod, FindsEverythingThatTheInterfaceReplaces) {
  for (const std::string &method : td::missing_methods()) {
    EXPECT_NE(method.find("GuiTest"), std::string::npos) << method;
  }
}

TEST(ReplaceMethod, ReportsAMissingMethodAndAddsNone) {
  SEL selector = sel_registerName("guiTestMissing");
  Class cls = [GuiTestReplaced class];
  EXPECT_EQ(td::replace_method(cls, selector, reinterpret_cast<IMP>(never_called)), nullptr);
  EXPECT_FALSE([cls instancesRespondToSelector:selector]);
  EXPECT_EQ(times_missing("-[GuiTestReplaced guiTestMissing]"), 1);
}

TEST(ReplaceMethod, ReportsAMissingClassMethod) {
  SEL selector = sel_registerName("guiTestMissing");
  Class cls = [GuiTestReplaced class];
  EXPECT_EQ(td::replace_method(object_getClass(cls), selector, reinterpret_cast<IMP>(never_called)),
            nullptr);
  EXPECT_FALSE([cls respondsToSelector:selector]);
  EXPECT_EQ(times_missing("+[GuiTestReplaced guiTestMissing]"), 1);
}

TEST(ReplaceMethod, ReportsAMissingClass) {
  SEL selector = sel_registerName("guiTestMissingToo");
  Class nowhere = objc_getClass("GuiTestNoSuchClass");
  ASSERT_EQ(nowhere, Nil);
  for (Class cls : {nowhere, object_getClass(nowhere)}) {
    EXPECT_EQ(td::replace_method(cls, selector, reinterpret_cast<IMP>(never_called)), nullptr);
  }
  EXPECT_EQ(times_missing("-[unknown class guiTestMissingToo]"), 2);
}
