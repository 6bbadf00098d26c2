# The target "check": formatting and static analysis, run again only when something has changed.
find_program(CLANG_FORMAT clang-format REQUIRED)
find_program(CLANG_TIDY clang-tidy REQUIRED)
find_program(SHELLCHECK shellcheck REQUIRED)

file(GLOB_RECURSE formatted CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
  ${PROJECT_SOURCE_DIR}/launcher/*.cpp ${PROJECT_SOURCE_DIR}/launcher/*.h
  ${PROJECT_SOURCE_DIR}/gui/*.cpp ${PROJECT_SOURCE_DIR}/gui/*.h ${PROJECT_SOURCE_DIR}/gui/*.mm
  ${PROJECT_SOURCE_DIR}/components/*.cpp ${PROJECT_SOURCE_DIR}/components/*.h
  ${PROJECT_SOURCE_DIR}/bench/*.cpp ${PROJECT_SOURCE_DIR}/bench/*.c
  ${PROJECT_SOURCE_DIR}/tests/*.cpp ${PROJECT_SOURCE_DIR}/tests/*.h ${PROJECT_SOURCE_DIR}/tests/*.mm)
file(GLOB scripts CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
  ${PROJECT_SOURCE_DIR}/scripts/* ${PROJECT_SOURCE_DIR}/.ci/run ${PROJECT_SOURCE_DIR}/tests/gui/with_private_tmp)

set(analysed ${formatted})
list(FILTER analysed INCLUDE REGEX "^(launcher|components)/.*\\.cpp$")
list(FILTER analysed EXCLUDE REGEX "_macos\\.cpp$")
set(headers ${formatted})
list(FILTER headers INCLUDE REGEX "\\.h$")

set(stamps)
# check_files(name files... COMMAND words...): one stamp for one command over some files.
function(check_files name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FILES;COMMAND;DEPENDS")
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${name}.stamp)
  add_custom_command(
    OUTPUT ${stamp}
    COMMAND ${arg_COMMAND}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS ${arg_FILES} ${arg_DEPENDS}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    VERBATIM)
  set(stamps ${stamps} ${stamp} PARENT_SCOPE)
endfunction()

list(TRANSFORM formatted PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE formatted_paths)
list(TRANSFORM headers PREPEND ${PROJECT_SOURCE_DIR}/)
list(TRANSFORM scripts PREPEND ${PROJECT_SOURCE_DIR}/)

check_files(format FILES ${formatted_paths} DEPENDS ${PROJECT_SOURCE_DIR}/.clang-format
  COMMAND ${CLANG_FORMAT} --dry-run -Werror ${formatted})
check_files(shell FILES ${scripts} COMMAND ${SHELLCHECK} ${scripts})
foreach(source ${analysed})
  string(REPLACE "/" "_" name ${source})
  check_files(tidy_${name} FILES ${PROJECT_SOURCE_DIR}/${source}
    DEPENDS ${headers} ${PROJECT_SOURCE_DIR}/.clang-tidy
    # Its standard error only counts the warnings of system headers.
    COMMAND sh -c "\"$@\" 2>/dev/null" sh ${CLANG_TIDY} --quiet -p ${CMAKE_BINARY_DIR} ${source})
endforeach()
# The interface, where GNUstep can compile it. It never releases what it makes, and has one language.
if(TANDREL_GUI AND NOT APPLE)
  include(${PROJECT_SOURCE_DIR}/gui/gnustep/gnustep.cmake)
endif()
if(TDGUI_UNIT_SOURCES AND NOT TDGUI_GNUSTEP_MISSING)
  foreach(source ${TDGUI_UNIT_SOURCES})
    get_filename_component(name ${source} NAME)
    td_clang_flags(flags ${source})
    check_files(tidy_gui_${name} FILES ${source}
      DEPENDS ${headers} ${PROJECT_SOURCE_DIR}/.clang-tidy
      COMMAND sh -c "\"$@\" 2>/dev/null" sh ${CLANG_TIDY} --quiet
        --checks=-clang-analyzer-osx.cocoa.*,-clang-analyzer-optin.osx.cocoa.localizability.*
        ${source} -- ${flags})
  endforeach()
endif()
# The file for the other platform, against a stub of the one header that this system lacks.
check_files(macos FILES ${PROJECT_SOURCE_DIR}/launcher/platform_macos.cpp DEPENDS ${headers}
  COMMAND ${CMAKE_CXX_COMPILER} -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only
    -Itests/macos_stub -Ilauncher -Igui launcher/platform_macos.cpp)
add_custom_target(check DEPENDS ${stamps})
