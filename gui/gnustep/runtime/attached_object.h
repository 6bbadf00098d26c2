/// An object stored with another one: GCC's Objective-C runtime has no associated objects.
#pragma once

#import <Foundation/Foundation.h>

namespace td {

/// Retains `value` and stores it with `owner`, in place of an earlier value, until `owner` is
/// deallocated; nil removes it. Main thread only.
void attach_object(id owner, id value);

/// The value that attach_object stored with `owner`, or nil. Main thread only.
id attached_object(id owner);

} // namespace td
