# Builds for macOS on another system, for CMAKE_OSX_ARCHITECTURES (one), with the headers and
# libraries that scripts/mac-check has put into build/macos.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${CMAKE_OSX_ARCHITECTURES})
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CMAKE_OSX_ARCHITECTURES)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

find_program(CMAKE_CXX_COMPILER clang++ REQUIRED)
set(CMAKE_OBJCXX_COMPILER ${CMAKE_CXX_COMPILER})
function(ask_compiler result question)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} ${question}
    OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${result} ${answer} PARENT_SCOPE)
endfunction()
ask_compiler(_linker -print-prog-name=ld64.lld)
ask_compiler(_clang -print-resource-dir)
ask_compiler(CMAKE_INSTALL_NAME_TOOL -print-prog-name=llvm-install-name-tool)

get_filename_component(_build ${CMAKE_CURRENT_LIST_DIR}/../../build/macos ABSOLUTE)
set(CMAKE_OSX_SYSROOT ${_build}/sysroot)
set(_headers ${_build}/package/lib)
set(_cpu ${CMAKE_OSX_ARCHITECTURES})
if(_cpu STREQUAL arm64)
  set(_cpu aarch64)
endif()
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES
  ${CMAKE_CURRENT_LIST_DIR}/include
  ${_headers}/libcxx/include
  ${_headers}/libcxxabi/include
  ${_clang}/include
  ${_headers}/libc/include/${_cpu}-macos.11-none
  ${_headers}/libc/include/any-macos.11-any
  ${_headers}/libc/include/any-macos-any)
set(CMAKE_OBJCXX_STANDARD_INCLUDE_DIRECTORIES ${CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES})

# The package's libc++ is told by macros how it was built: here as Apple builds it. Its annotations
# of what is newer than the oldest macOS stay on, as the macro that turns them off is not defined.
set(_libcxx "-D_LIBCPP_ABI_VERSION=1 -D_LIBCPP_ABI_NAMESPACE=__1")
set(CMAKE_CXX_FLAGS_INIT
  "--target=${CMAKE_OSX_ARCHITECTURES}-apple-macos -nostdinc -nostdinc++ ${_libcxx}")
set(CMAKE_OBJCXX_FLAGS_INIT ${CMAKE_CXX_FLAGS_INIT})
# The version is that of Apple's linker whose options are used. An ARM program is signed by default.
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "--ld-path=${_linker} -mlinker-version=520 -stdlib=libc++ -Wl,-adhoc_codesign -Wno-unused-command-line-argument")

# GoogleTest and pkg-config of this system would bring its other headers along.
set(CMAKE_FIND_ROOT_PATH ${CMAKE_OSX_SYSROOT})
set(GTest_DIR ${CMAKE_CURRENT_LIST_DIR})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_CURRENT_LIST_DIR})
