# What AppKit's unit takes on GNUstep. Where all of it is installed, enables Objective-C++, makes the
# target tdgui_appkit, which says how the unit, and what includes its headers, is compiled and linked,
# and sets TDGUI_GNUSTEP_SOURCES to the files with what GNUstep lacks. Otherwise there is no target.

# Blocks take clang, so clang compiles the Objective-C++, whatever compiles the C++. The runtime's
# headers and library come with GCC.
find_program(TDGUI_CLANG NAMES ${CMAKE_OBJCXX_COMPILER} clang++)
find_program(TDGUI_GNUSTEP_CONFIG NAMES gnustep-config)
find_library(TDGUI_BLOCKS_LIBRARY NAMES BlocksRuntime)
find_library(TDGUI_GUI_LIBRARY NAMES gnustep-gui)
find_library(TDGUI_BASE_LIBRARY NAMES gnustep-base)
foreach(_file IN ITEMS include libobjc.so)
  execute_process(COMMAND gcc -print-file-name=${_file}
    OUTPUT_VARIABLE _${_file} OUTPUT_STRIP_TRAILING_WHITESPACE)
endforeach()
if(TDGUI_GNUSTEP_CONFIG)
  execute_process(COMMAND ${TDGUI_GNUSTEP_CONFIG} --variable=GNUSTEP_SYSTEM_HEADERS
    OUTPUT_VARIABLE _headers OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
if(NOT TDGUI_CLANG OR NOT TDGUI_BLOCKS_LIBRARY OR NOT TDGUI_GUI_LIBRARY OR NOT TDGUI_BASE_LIBRARY OR
   NOT EXISTS "${_headers}/AppKit/AppKit.h" OR NOT EXISTS "${_include}/objc/objc.h" OR
   NOT EXISTS "${_libobjc.so}")
  return()
endif()

# CMake accepts only a full path for a language that is enabled later.
set(CMAKE_OBJCXX_COMPILER "${TDGUI_CLANG}" CACHE FILEPATH "The Objective-C++ compiler: clang" FORCE)
enable_language(OBJCXX)

add_library(tdgui_appkit INTERFACE)
target_include_directories(tdgui_appkit INTERFACE "${PROJECT_SOURCE_DIR}/gui")
target_include_directories(tdgui_appkit SYSTEM INTERFACE
  "${CMAKE_CURRENT_LIST_DIR}/include" "${_headers}")
# A class may leave out the optional methods of AppKit's protocols, which GNUstep declares as
# required, and a category may replace a method of GNUstep's. Methods are kept and called by casts
# of their pointers.
set(_options -fobjc-runtime=gcc -fblocks -fexceptions -fobjc-exceptions
  -fconstant-string-class=NSConstantString -Wno-cast-function-type -Wno-protocol
  -Wno-objc-protocol-method-implementation "-idirafter${_include}")
set(_definitions GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_GUI_LIBRARY=1 GNU_RUNTIME=1
  _NATIVE_OBJC_EXCEPTIONS)
# After the warnings that they take back.
add_library(tdgui_gnustep INTERFACE)
target_compile_options(tdgui_gnustep INTERFACE "$<$<COMPILE_LANGUAGE:OBJCXX>:${_options}>")
target_compile_definitions(tdgui_appkit INTERFACE "$<$<COMPILE_LANGUAGE:OBJCXX>:${_definitions}>")
# The blocks runtime comes first: libgnustep-base has an older one, which never copies clang's
# blocks.
target_link_libraries(tdgui_appkit INTERFACE tandrel_build tdgui_gnustep
  ${TDGUI_BLOCKS_LIBRARY} ${TDGUI_GUI_LIBRARY} ${TDGUI_BASE_LIBRARY} "${_libobjc.so}")
file(GLOB TDGUI_GNUSTEP_SOURCES CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/*.mm")
