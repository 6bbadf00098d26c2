# GoogleTest's headers alone: the unit tests are compiled for macOS, not linked.
foreach(library gtest gmock gmock_main)
  add_library(GTest::${library} INTERFACE IMPORTED)
  target_include_directories(GTest::${library} INTERFACE ${CMAKE_OSX_SYSROOT}/include)
endforeach()
