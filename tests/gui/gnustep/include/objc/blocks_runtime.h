// GNUstep's headers include this one when blocks are enabled; GCC's Objective-C runtime does not
// have it. The blocks runtime library declares the same in Block.h.
#pragma once

#include <Block.h>
