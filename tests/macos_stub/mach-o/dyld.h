/// The one declaration that the launcher needs of this header, for a syntax check on other systems.
#pragma once

#include <cstdint>

extern "C" int _NSGetExecutablePath(char *buffer, std::uint32_t *size); // NOLINT
