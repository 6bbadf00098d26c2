/// The declarations that the launcher needs of this header, for a syntax check on other systems.
#pragma once

#include <cstdint>

#include <sys/types.h>

extern "C" {
int proc_pidinfo(int pid, int flavor, std::uint64_t arg, void *buffer, int buffersize); // NOLINT
int proc_pidfdinfo(int pid, int fd, int flavor, void *buffer, int buffersize);          // NOLINT
int proc_listpids(std::uint32_t type, std::uint32_t typeinfo, void *buffer,
                  int buffersize); // NOLINT
}
