# The libraries of the host. Header-only libraries without a CMake package get a target here.
if(CLOCK_CROSS_TESTS)
  return()
endif()

find_package(EXPAT REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(CLI11 REQUIRED)

# Asio may free in one source what another source has allocated, and chooses how to allocate by the
# standard headers included before it. So the choice is made here, for all sources.
add_library(clock_asio INTERFACE)
target_compile_definitions(clock_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED
                                                ASIO_DISABLE_STD_ALIGNED_ALLOC)

add_library(clock_msgpack INTERFACE)
target_compile_definitions(clock_msgpack INTERFACE MSGPACK_NO_BOOST)
