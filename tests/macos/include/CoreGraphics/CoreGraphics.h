/// What the launcher uses of this framework, for compiling it without a Mac. All of it is in the
/// oldest macOS.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

/// The caller's session with the window server, to be released; null when it has none or there is
/// no window server.
extern "C" CFDictionaryRef CGSessionCopyCurrentDictionary(void);
