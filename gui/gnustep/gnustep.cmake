# Compiles the AppKit unit and the compatibility layer on systems with GNUstep. That takes clang,
# for blocks, whatever the project's C++ compiler is, so clang is called directly.
#
# Sets TDGUI_GNUSTEP_MISSING to what is not installed: empty when the interface can be built.
# td_clang_objects() and TDGUI_LINK_LIBRARIES are for the module and for its tests.

find_program(TDGUI_CLANGXX NAMES clang++ clang++-14)
find_program(TDGUI_GNUSTEP_CONFIG NAMES gnustep-config)
find_library(TDGUI_BLOCKS_LIBRARY NAMES BlocksRuntime)
find_library(TDGUI_GUI_LIBRARY NAMES gnustep-gui)
find_library(TDGUI_X11_LIBRARY NAMES X11)

set(TDGUI_GNUSTEP_MISSING)
foreach(_part IN ITEMS clang++:CLANGXX gnustep-config:GNUSTEP_CONFIG libBlocksRuntime:BLOCKS_LIBRARY
                       libgnustep-gui:GUI_LIBRARY libX11:X11_LIBRARY)
  string(REPLACE ":" ";" _part "${_part}")
  list(GET _part 0 _name)
  list(GET _part 1 _variable)
  if(NOT TDGUI_${_variable})
    list(APPEND TDGUI_GNUSTEP_MISSING ${_name})
  endif()
endforeach()
if(TDGUI_GNUSTEP_MISSING)
  return()
endif()

execute_process(
  COMMAND ${TDGUI_GNUSTEP_CONFIG} --variable=GNUSTEP_SYSTEM_HEADERS
  OUTPUT_VARIABLE _headers
  OUTPUT_STRIP_TRAILING_WHITESPACE)
# The runtime's headers and library come with GCC.
execute_process(
  COMMAND gcc -print-file-name=include
  OUTPUT_VARIABLE _objc_headers
  OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(
  COMMAND gcc -print-file-name=libobjc.so
  OUTPUT_VARIABLE _objc_library
  OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT EXISTS "${_headers}/AppKit/AppKit.h")
  list(APPEND TDGUI_GNUSTEP_MISSING "GNUstep's AppKit headers")
endif()
if(NOT EXISTS "${_objc_headers}/objc/objc.h" OR NOT EXISTS "${_objc_library}")
  list(APPEND TDGUI_GNUSTEP_MISSING "GCC's Objective-C runtime")
endif()

set(_gui "${CMAKE_CURRENT_LIST_DIR}/..")
# The warnings of this build, as for the rest of it.
separate_arguments(_warnings NATIVE_COMMAND "${CMAKE_CXX_FLAGS}")
set(TDGUI_CXX_FLAGS
    -std=c++17 -g -O2 -fPIC -pthread -fvisibility=hidden ${_warnings} "-I${_gui}"
    "-I${CMAKE_CURRENT_LIST_DIR}")
# A class may leave out the optional methods of AppKit's protocols, which GNUstep declares as
# required, and a category may replace a method of GNUstep's.
set(TDGUI_OBJCXX_FLAGS
    ${TDGUI_CXX_FLAGS}
    -fobjc-runtime=gcc
    -fblocks
    -fexceptions
    -fobjc-exceptions
    -fconstant-string-class=NSConstantString
    -DGNUSTEP
    -DGNUSTEP_BASE_LIBRARY=1
    -DGNU_GUI_LIBRARY=1
    -DGNU_RUNTIME=1
    -D_NATIVE_OBJC_EXCEPTIONS
    -Wno-protocol
    -Wno-objc-protocol-method-implementation
    -isystem "${CMAKE_CURRENT_LIST_DIR}/include"
    -isystem "${_headers}"
    -idirafter "${_objc_headers}")
# The blocks runtime comes first: libgnustep-base has an older one, which never copies clang's
# blocks.
set(TDGUI_LINK_LIBRARIES -pthread "${TDGUI_BLOCKS_LIBRARY}" "${TDGUI_GUI_LIBRARY}" -lgnustep-base
                         "${_objc_library}" "${TDGUI_X11_LIBRARY}")

# td_clang_flags(<variable> <source>): sets <variable> to what compiles that source.
function(td_clang_flags variable source)
  if(source MATCHES "\\.mm$")
    set(${variable} ${TDGUI_OBJCXX_FLAGS} PARENT_SCOPE)
  else()
    set(${variable} ${TDGUI_CXX_FLAGS} PARENT_SCOPE)
  endif()
endfunction()

# td_clang_objects(<variable> [FLAGS flag...] SOURCES source...): compiles each source, by absolute
# path, into the current binary directory and sets <variable> to the objects.
function(td_clang_objects variable)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FLAGS;SOURCES")
  set(objects)
  foreach(source IN LISTS arg_SOURCES)
    get_filename_component(name "${source}" NAME)
    set(object "${CMAKE_CURRENT_BINARY_DIR}/${name}.o")
    td_clang_flags(flags "${source}")
    add_custom_command(
      OUTPUT "${object}"
      COMMAND ${TDGUI_CLANGXX} ${flags} ${arg_FLAGS} -MD -MF "${object}.d" -c "${source}" -o
              "${object}"
      DEPENDS "${source}"
      DEPFILE "${object}.d"
      COMMENT "Compiling ${name} with clang"
      VERBATIM)
    list(APPEND objects "${object}")
  endforeach()
  set(${variable} ${objects} PARENT_SCOPE)
endfunction()

file(GLOB TDGUI_LAYER_SOURCES CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/*.mm"
     "${CMAKE_CURRENT_LIST_DIR}/*.cpp")
# The unit and the layer, without the module's entry points: what the tests link as well.
list(REMOVE_ITEM TDGUI_LAYER_SOURCES "${CMAKE_CURRENT_LIST_DIR}/module.cpp")
set(TDGUI_UNIT_SOURCES "${_gui}/launcher_mac_gui.mm" ${TDGUI_LAYER_SOURCES})
