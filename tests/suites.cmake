# What a whole run consists of besides the unit tests and the tests of the interface: the pytest suites, the same
# tests of the sanitized launchers, and the static checks. The label is the folder's name. A new suite is one
# line here: pytest_suite(NAME PATHS tests/NAME).
#
# CTest runs as many at a time as the preset's number of jobs allows. Tests wait more than they compute, so there
# are many jobs for a processor; builds and checks, which compute, have a lower priority than tests. All write
# their results to build/results, for totals.py.
set(results ${PROJECT_SOURCE_DIR}/build/results)
# scripts/bootstrap has installed the modules for this interpreter; the PATH may have others.
set(python /usr/bin/python3)
if(APPLE)
  set(python ${PROJECT_SOURCE_DIR}/build/python/bin/python)
endif()

# pytest_suite(name PATHS paths... [LABEL label] [WORKERS number] [COST seconds (the longest start first)] [OPTIONS options...]
#   [ENVIRONMENT variables...] [AFTER fixtures...])
function(pytest_suite name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL;WORKERS;COST" "PATHS;OPTIONS;ENVIRONMENT;AFTER")
  if(NOT arg_LABEL)
    set(arg_LABEL ${name})
  endif()
  if(NOT arg_WORKERS)
    set(arg_WORKERS 4)
  endif()
  add_test(NAME ${name}
    COMMAND ${python} -m pytest -q -n ${arg_WORKERS} --basetemp=${CMAKE_BINARY_DIR}/pytest-${name}
      --junit-xml=${results}/${name}.xml ${arg_OPTIONS} ${arg_PATHS}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(${name} PROPERTIES LABELS "${arg_LABEL}" PROCESSORS ${arg_WORKERS} COST "${arg_COST}"
    ENVIRONMENT "PYTHONDONTWRITEBYTECODE=1;${arg_ENVIRONMENT}" FIXTURES_REQUIRED "${arg_AFTER}" TIMEOUT 1500)
endfunction()

# lower_priority(name LABEL label COMMAND command [LOCK lock] [PROVIDES fixture]): a build or a check.
function(lower_priority name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL;COMMAND;LOCK;NICE;PROVIDES" "")
  add_test(NAME ${name} COMMAND nice -n ${arg_NICE} sh -c "${arg_COMMAND}" WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(${name} PROPERTIES LABELS ${arg_LABEL} COST 1000 RESOURCE_LOCK ${arg_LOCK}
    FIXTURES_SETUP "${arg_PROVIDES}" TIMEOUT 1500)
endfunction()

pytest_suite(bundle PATHS tests/bundle)
pytest_suite(install PATHS tests/install COST 60 OPTIONS --dist loadfile)
pytest_suite(documents PATHS tests/documents)
pytest_suite(bench PATHS tests/bench WORKERS 1)
pytest_suite(system PATHS tests/system WORKERS 8 COST 100)
# 100 sequences, of which each build has its own seeds.
pytest_suite(chaos PATHS tests/chaos WORKERS 8 COST 60 ENVIRONMENT "TD_CHAOS=60 1")
if(NOT APPLE)
  pytest_suite(desktop PATHS tests/desktop COST 115)
  # The launcher linked with its interface, and the tests' module for a Mac.
  set(linked interface interface_exit interface_search closed_terminal system)
  list(TRANSFORM linked REPLACE "(.+)" "tests/system/test_\\1.py")
  pytest_suite(system-linked LABEL system PATHS ${linked} ENVIRONMENT TD_SYSTEM=macos COST 25)
endif()

# Left out of the inner loop: what waits most, for timeouts, or at many moments of one wait.
set(waiting hub_wait interface_exit interface_search interrupts ports_change_failures second_copy)
list(TRANSFORM waiting REPLACE "(.+)" "--ignore=tests/system/test_\\1.py")
pytest_suite(system-quick LABEL quick PATHS tests/system WORKERS 12 OPTIONS -m "not one_build" ${waiting})

# A sanitizer's report must fail the test that caused it.
set(leaks :detect_leaks=1)
if(APPLE)
  set(leaks) # Apple's AddressSanitizer does not look for them
endif()
set(options_asan ASAN_OPTIONS=strict_string_checks=1${leaks})
set(options_tsan TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1)
set(sequences_asan "TD_CHAOS=20 61")
set(sequences_tsan "TD_CHAOS=20 81")
foreach(build asan tsan fuzz)
  set(folder ${PROJECT_SOURCE_DIR}/build/${build})
  set(command "[ -f ${folder}/build.ninja ] || cmake --preset ${build} && cmake --build --preset ${build} -- --quiet")
  lower_priority(build-${build} LABEL ${build} COMMAND "${command}" NICE 5 LOCK sanitized PROVIDES ${build})
endforeach()
foreach(build asan tsan)
  set(folder ${PROJECT_SOURCE_DIR}/build/${build})
  add_test(NAME unit-${build} COMMAND ${CMAKE_CTEST_COMMAND} --test-dir ${folder} --output-on-failure
    --no-tests=error --timeout 300 --parallel 4 --output-junit ${results}/unit-${build}.xml)
  set_tests_properties(unit-${build} PROPERTIES LABELS ${build} PROCESSORS 4 COST 20
    ENVIRONMENT ${options_${build}} FIXTURES_REQUIRED ${build} TIMEOUT 1500)
  pytest_suite(system-${build} LABEL ${build} PATHS tests/system WORKERS 8 COST 150 OPTIONS -m "not one_build"
    ENVIRONMENT TD_BUILD_DIR=${folder} TD_MODULE_DIR=${folder}/scripted ${options_${build}} AFTER ${build})
  pytest_suite(chaos-${build} LABEL chaos PATHS tests/chaos WORKERS 4 COST 60 AFTER ${build}
    ENVIRONMENT TD_BUILD_DIR=${folder} TD_MODULE_DIR=${folder}/scripted ${options_${build}} ${sequences_${build}})
endforeach()

add_test(NAME fuzz COMMAND nice -n 10 ${CMAKE_CTEST_COMMAND} --test-dir ${PROJECT_SOURCE_DIR}/build/fuzz -L fuzz
  --output-on-failure --no-tests=error --parallel 3 --output-junit ${results}/fuzz.xml)
set_tests_properties(fuzz PROPERTIES LABELS fuzz PROCESSORS 2 COST 25 FIXTURES_REQUIRED fuzz TIMEOUT 300)

lower_priority(check LABEL static COMMAND "cmake --build --preset dev --target check -- --quiet" NICE 15 LOCK static)
if(NOT APPLE)
  lower_priority(libcxx LABEL static NICE 15 LOCK static
    COMMAND "[ -f build/libcxx/build.ninja ] || cmake --preset libcxx && cmake --build --preset libcxx -- --quiet")
  lower_priority(mac-check LABEL static COMMAND scripts/mac-check NICE 15 LOCK static)
  set_tests_properties(mac-check PROPERTIES SKIP_REGULAR_EXPRESSION "No check for macOS")
endif()
