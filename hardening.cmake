# Hardening as distributions use it: code at random addresses, address tables that are filled at the
# start and read-only from then on, protected stacks, checked calls of the C library.
include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_compile_options(-fstack-protector-strong)
# The C library's checks need an optimizing build. Some compilers define the macro by themselves.
set(_optimizing $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
add_compile_options($<${_optimizing}:-U_FORTIFY_SOURCE> $<${_optimizing}:-D_FORTIFY_SOURCE=2>)
if(NOT APPLE)
  add_link_options(LINKER:-z,relro,-z,now)
endif()
