# What the host is built on. Header-only libraries without a package file of their own get a target.
if(CLOCK_CROSS_TESTS)
  return()
endif()

find_package(EXPAT REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(CLI11 REQUIRED)

# Asio frees in one source what another has allocated, and left alone it chooses the way by what
# standard header happens to come before it: hence one way for all.
add_library(clock_asio INTERFACE)
target_compile_definitions(clock_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED
                                                ASIO_DISABLE_STD_ALIGNED_ALLOC)

add_library(clock_msgpack INTERFACE)
target_compile_definitions(clock_msgpack INTERFACE MSGPACK_NO_BOOST)
