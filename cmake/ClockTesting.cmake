# clock_add_test: one GoogleTest program, and its tests for ctest.
if(CLOCK_CROSS_TESTS)
  # A cross compiler finds no installed GoogleTest, so Debian's source package is built.
  set(CLOCK_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Source of GoogleTest")
  set(INSTALL_GTEST OFF CACHE BOOL "")
  block() # its warnings are not ours
    set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
    add_subdirectory(${CLOCK_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  endblock()
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# Time limits of one test and of a whole program, in seconds.
set(CLOCK_TEST_TIMEOUT 60 CACHE STRING "Time limit of one test")
set(CLOCK_PROGRAM_TIMEOUT 600 CACHE STRING "Time limit of a test program")

# Test code is built without optimisation, which halves its build time. The tested code keeps the
# options of the build. The thread-safety analysis is off, because most tests use shared objects on one
# thread, without their locks.
set(CLOCK_TEST_OPTIONS -O0 "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-thread-safety-analysis>")

# ccache treats precompiled headers of other folders as different, and is faster without them.
option(CLOCK_PRECOMPILED_TESTS "Precompile GoogleTest's headers; not done with ccache" ON)
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(CLOCK_PRECOMPILED_TESTS OFF)
endif()

# Where tests find the programs that they start. A relative path is relative to a test's folder.
set(CLOCK_TESTED_PROGRAMS "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}" CACHE STRING
    "Folder of the programs that tests start")

# clock_layer_needs(layer target...): targets that "./dev test -L LAYER" builds
function(clock_layer_needs layer)
  if(NOT TARGET layer_${layer})
    add_custom_target(layer_${layer})
  endif()
  if(ARGN)
    add_dependencies(layer_${layer} ${ARGN})
  endif()
endfunction()

# clock_add_test(NAME name SOURCES file... [LIBS target...] LABEL layer [SERIAL | ALONE] [SHARDS n])
#   LIBS    libraries; GoogleTest, GoogleMock and their main are always linked
#   LABEL   the layer: unit, plugin, host, integration, ... ("./dev test -L unit")
#   SERIAL  never runs at the same time as another SERIAL test: for tests that drive processes
#   ALONE   never runs at the same time as any other test: for tests that measure times
#   SHARDS  for the longest programs: with CLOCK_TEST_PER_PROGRAM, their tests run in n parts
function(clock_add_test)
  cmake_parse_arguments(TEST "SERIAL;ALONE" "NAME;LABEL;SHARDS" "SOURCES;LIBS" ${ARGN})
  if(TEST_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "clock_add_test: unknown argument ${TEST_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT TEST_SHARDS)
    set(TEST_SHARDS 1)
  endif()
  add_executable(${TEST_NAME} ${TEST_SOURCES})
  set_target_properties(${TEST_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY
                                                ${CMAKE_BINARY_DIR}/bin/tests)
  target_include_directories(${TEST_NAME} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_options(${TEST_NAME} PRIVATE ${CLOCK_TEST_OPTIONS})
  target_link_libraries(${TEST_NAME} PRIVATE ${TEST_LIBS} test_no_skips GTest::gmock_main)
  if(CLOCK_PRECOMPILED_TESTS)
    target_precompile_headers(${TEST_NAME} REUSE_FROM test_headers)
  endif()
  clock_layer_needs(${TEST_LABEL} ${TEST_NAME})
  # COST: the longest tests start first, then those that cannot run at the same time.
  set(properties LABELS ${TEST_LABEL})
  if(TEST_SERIAL)
    list(APPEND properties RESOURCE_LOCK processes COST 10)
  elseif(TEST_SHARDS GREATER 1)
    list(APPEND properties COST 20)
  endif()
  if(TEST_ALONE)
    list(APPEND properties RUN_SERIAL ON)
  endif()
  if(CLOCK_TEST_PER_PROGRAM)
    foreach(shard RANGE 1 ${TEST_SHARDS})
      math(EXPR index "${shard} - 1")
      add_test(NAME ${TEST_NAME}.${shard} COMMAND ${TEST_NAME})
      set_tests_properties(${TEST_NAME}.${shard} PROPERTIES ${properties} TIMEOUT ${CLOCK_PROGRAM_TIMEOUT}
        ENVIRONMENT "GTEST_TOTAL_SHARDS=${TEST_SHARDS};GTEST_SHARD_INDEX=${index}")
    endforeach()
  else()
    gtest_discover_tests(${TEST_NAME} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                         PROPERTIES ${properties} TIMEOUT ${CLOCK_TEST_TIMEOUT})
  endif()
endfunction()

# clock_add_check(NAME name COMMAND script argument... LABEL layer): a Python script; 0 is success.
function(clock_add_check)
  cmake_parse_arguments(CHECK "" "NAME;LABEL" "COMMAND" ${ARGN})
  clock_layer_needs(${CHECK_LABEL})
  add_test(NAME ${CHECK_NAME} COMMAND ${Python3_EXECUTABLE} -B ${CHECK_COMMAND}
           WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
  set_tests_properties(${CHECK_NAME} PROPERTIES LABELS ${CHECK_LABEL} TIMEOUT 300)
endfunction()
