/// An extra instance variable for GNUstep's objects: the GCC Objective-C runtime has no associated
/// objects.
#pragma once

#import <Foundation/Foundation.h>

namespace td {

/// Keeps `value` (retained) with `owner` until `owner` is deallocated; nil removes it. One value
/// for each owner. Main thread only.
void attach_object(id owner, id value);

/// What attach_object kept with `owner`, or nil. Main thread only.
id attached_object(id owner);

} // namespace td
