# Finds what builds the menu-bar interface on systems with GNUstep. Blocks take clang, so clang
# compiles the Objective-C++, whatever compiles the C++.
#
# Sets TDGUI_MISSING to the names of what is not installed; it is empty when the interface can be
# built, and CMAKE_OBJCXX_COMPILER is clang then. TDGUI_HEADERS, TDGUI_RUNTIME_HEADERS and
# TDGUI_LIBRARIES are what gui/ compiles and links with.

# Also a compiler that the user names: CMake accepts only a full path for a language enabled later.
find_program(_clang NAMES ${CMAKE_OBJCXX_COMPILER} clang++ clang++-14 NO_CACHE)
if(_clang)
  set(CMAKE_OBJCXX_COMPILER "${_clang}" CACHE FILEPATH "The Objective-C++ compiler: clang" FORCE)
endif()
find_program(TDGUI_GNUSTEP_CONFIG NAMES gnustep-config)
find_library(TDGUI_BLOCKS_LIBRARY NAMES BlocksRuntime)
find_library(TDGUI_GUI_LIBRARY NAMES gnustep-gui)
find_library(TDGUI_BASE_LIBRARY NAMES gnustep-base)
find_library(TDGUI_X11_LIBRARY NAMES X11)
find_library(TDGUI_XRANDR_LIBRARY NAMES Xrandr)
find_library(TDGUI_XCB_LIBRARY NAMES xcb)
find_library(TDGUI_SHAPE_LIBRARY NAMES xcb-shape)

set(TDGUI_MISSING)
foreach(_part IN ITEMS clang++:_clang gnustep-config:TDGUI_GNUSTEP_CONFIG
                       libBlocksRuntime:TDGUI_BLOCKS_LIBRARY libgnustep-gui:TDGUI_GUI_LIBRARY
                       libgnustep-base:TDGUI_BASE_LIBRARY libX11:TDGUI_X11_LIBRARY
                       libXrandr:TDGUI_XRANDR_LIBRARY libxcb:TDGUI_XCB_LIBRARY
                       libxcb-shape:TDGUI_SHAPE_LIBRARY)
  string(REPLACE ":" ";" _part "${_part}")
  list(GET _part 0 _name)
  list(GET _part 1 _variable)
  if(NOT ${_variable})
    list(APPEND TDGUI_MISSING ${_name})
  endif()
endforeach()
if(TDGUI_MISSING)
  return()
endif()

execute_process(
  COMMAND ${TDGUI_GNUSTEP_CONFIG} --variable=GNUSTEP_SYSTEM_HEADERS
  OUTPUT_VARIABLE TDGUI_HEADERS
  OUTPUT_STRIP_TRAILING_WHITESPACE)
# The runtime's headers and library come with GCC.
execute_process(
  COMMAND gcc -print-file-name=include
  OUTPUT_VARIABLE TDGUI_RUNTIME_HEADERS
  OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(
  COMMAND gcc -print-file-name=libobjc.so
  OUTPUT_VARIABLE _runtime_library
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT EXISTS "${TDGUI_HEADERS}/AppKit/AppKit.h")
  list(APPEND TDGUI_MISSING "GNUstep's AppKit headers")
endif()
if(NOT EXISTS "${TDGUI_RUNTIME_HEADERS}/objc/objc.h" OR NOT EXISTS "${_runtime_library}")
  list(APPEND TDGUI_MISSING "GCC's Objective-C runtime")
endif()

# The blocks runtime comes first: libgnustep-base has an older one, which never copies clang's
# blocks.
set(TDGUI_LIBRARIES ${TDGUI_BLOCKS_LIBRARY} ${TDGUI_GUI_LIBRARY} ${TDGUI_BASE_LIBRARY}
                    ${_runtime_library} ${TDGUI_XRANDR_LIBRARY} ${TDGUI_X11_LIBRARY} ${TDGUI_XCB_LIBRARY}
                    ${TDGUI_SHAPE_LIBRARY})
