# The target "check": formatting and static analysis, run again only when something has changed.
#
# A Mac has other versions of the tools, which have other rules. What is the same on every system, the
# formatting, the scripts, Python and the style, is checked on Linux alone; so a Mac's clang-tidy only looks
# for errors.
find_program(CLANG_TIDY clang-tidy REQUIRED)
set(tidy ${CLANG_TIDY} --quiet -p ${CMAKE_BINARY_DIR})
if(APPLE)
  set(cocoa "-clang-analyzer-osx.cocoa.*,-clang-analyzer-optin.osx.cocoa.localizability.*")
  list(APPEND tidy "--checks=-*,clang-analyzer-*,${cocoa}")
else()
  find_program(CLANG_FORMAT clang-format REQUIRED)
  find_program(SHELLCHECK shellcheck REQUIRED)
  find_program(FLAKE8 flake8 REQUIRED)
endif()

file(GLOB_RECURSE formatted CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
  ${PROJECT_SOURCE_DIR}/launcher/*.cpp ${PROJECT_SOURCE_DIR}/launcher/*.h
  ${PROJECT_SOURCE_DIR}/gui/*.cpp ${PROJECT_SOURCE_DIR}/gui/*.h ${PROJECT_SOURCE_DIR}/gui/*.mm
  ${PROJECT_SOURCE_DIR}/components/*.cpp ${PROJECT_SOURCE_DIR}/components/*.h
  ${PROJECT_SOURCE_DIR}/tests/*.cpp ${PROJECT_SOURCE_DIR}/tests/*.h ${PROJECT_SOURCE_DIR}/tests/*.mm)
file(GLOB scripts CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
  ${PROJECT_SOURCE_DIR}/scripts/* ${PROJECT_SOURCE_DIR}/.ci/run ${PROJECT_SOURCE_DIR}/tests/gui/with_private_tmp
  ${PROJECT_SOURCE_DIR}/packaging/completions/*.bash
  ${PROJECT_SOURCE_DIR}/packaging/packages/debian/prerm)
file(GLOB_RECURSE python CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/bench/*.py ${PROJECT_SOURCE_DIR}/packaging/*.py ${PROJECT_SOURCE_DIR}/tests/*.py)

# What this system compiles: on Linux also the files for macOS, in tests/macos_stub.
set(analysed ${formatted})
list(FILTER analysed INCLUDE REGEX "^(launcher|components|gui)/.*\\.(cpp|mm)$")
if(APPLE)
  list(FILTER analysed EXCLUDE REGEX "_linux\\.cpp$|^gui/qt/")
elseif(NOT TARGET tdgui)
  list(FILTER analysed EXCLUDE REGEX "^gui/")
elseif(NOT TARGET tdgui_appkit)
  list(FILTER analysed EXCLUDE REGEX "^gui/launcher_mac_gui")
endif()
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

if(NOT APPLE)
  check_files(format FILES ${formatted_paths} DEPENDS ${PROJECT_SOURCE_DIR}/.clang-format
    COMMAND ${CLANG_FORMAT} --dry-run -Werror ${formatted})
  check_files(shell FILES ${scripts} COMMAND ${SHELLCHECK} ${scripts})
  check_files(python FILES ${python} DEPENDS ${PROJECT_SOURCE_DIR}/.flake8 COMMAND ${FLAKE8} ${python})
endif()
foreach(source ${analysed})
  string(REPLACE "/" "_" name ${source})
  check_files(tidy_${name} FILES ${PROJECT_SOURCE_DIR}/${source}
    DEPENDS ${headers} ${PROJECT_SOURCE_DIR}/.clang-tidy ${PROJECT_SOURCE_DIR}/gui/.clang-tidy
    # Its standard error only counts the warnings of system headers.
    COMMAND sh -c "\"$@\" 2>/dev/null" sh ${tidy} ${source})
endforeach()
add_custom_target(check DEPENDS ${stamps})
