/// What the launcher uses of this framework, for compiling it without a Mac. All of it is in the
/// oldest macOS.
#pragma once

using CFTypeRef = const void *;
using CFDictionaryRef = const struct __CFDictionary *; // NOLINT(bugprone-reserved-identifier)

/// `object` must not be null.
extern "C" void CFRelease(CFTypeRef object);
