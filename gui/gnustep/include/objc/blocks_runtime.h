// GNUstep's headers ask for this one when blocks are on; the GCC Objective-C runtime has none. The
// blocks runtime library says the same in Block.h.
#pragma once

#include <Block.h>
