# The options of the configuration, and the defaults of every target. A project that contains this
# one decides for itself on all that is not the clock's own.

option(CLOCK_WITH_HOST "Build the workstation host and the tests; OFF is the firmware build"
       ${PROJECT_IS_TOP_LEVEL})
option(CLOCK_WITH_TESTS "Build tests, benchmarks and examples with the host" ON)
option(CLOCK_LINK_ARCHIVES "Link SQLite and expat into the host where their archives are installed" ON)
option(CLOCK_INSTALL "Install what is built, with cmake --install" ${PROJECT_IS_TOP_LEVEL})
option(CLOCK_CROSS_TESTS "Only what needs the C++ library alone: plug-in, its unit tests" OFF)
option(CLOCK_CCACHE "Use ccache when it is installed" ON)
option(CLOCK_FUZZ "Build the fuzz targets; needs clang" OFF)
option(CLOCK_TEST_PER_PROGRAM "Run each test program once, not once for each test" OFF)
# Off where the plug-in ships or is measured, so that the tests run the object code that ships.
option(CLOCK_UNITY_PLUGIN "Compile the plug-in's sources together" OFF)
set(CLOCK_SANITIZE "" CACHE STRING "address | undefined | thread | address,undefined")

set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Log lines contain __FILE__: make it the path in the tree, not on the machine that built it.
add_compile_options("-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")

# clock_add_folders(folder...)
function(clock_add_folders)
  foreach(folder IN LISTS ARGN)
    add_subdirectory(${folder})
  endforeach()
endfunction()

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

# Sources of the host and of the tests are compiled together, eight at a time, which takes a third of the time.
# ./dev mutate compiles each source of the host alone.
set(CMAKE_UNITY_BUILD ON CACHE BOOL "Compile the host's sources together")
set(CMAKE_UNITY_BUILD_BATCH_SIZE 8 CACHE STRING "Most sources that are compiled together")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Type of build" FORCE)
endif()

# Optimised and with assertions, so that the tests run the code that ships.
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g")

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The layout of an installation, so that a program finds the plug-in at ../lib here too.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

find_program(CCACHE_PROGRAM ccache)
if(CLOCK_CCACHE AND CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
