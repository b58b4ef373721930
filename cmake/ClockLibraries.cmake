# The libraries of the host. Header-only libraries without a CMake package get a target here.
if(CLOCK_CROSS_TESTS)
  return()
endif()

find_package(EXPAT REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(Boost 1.74 QUIET) # headers, for the panel, which is left out without them

add_library(clock_msgpack INTERFACE)
target_compile_definitions(clock_msgpack INTERFACE MSGPACK_NO_BOOST)
