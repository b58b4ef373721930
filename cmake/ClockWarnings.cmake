# Warnings are errors, for gcc and clang alike.
set(CLOCK_WARNINGS
    -Wall
    -Wextra
    -Wpedantic
    -Wshadow
    -Wconversion
    -Wsign-conversion
    -Wcast-qual
    -Wcast-align
    -Wformat=2
    -Wundef
    -Wimplicit-fallthrough)
set(CLOCK_CXX_WARNINGS -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wextra-semi)
# gcc takes the value of an empty std::optional for uninitialised memory that somebody reads.
set(CLOCK_GNU_WARNINGS -Wlogical-op -Wduplicated-cond -Wno-maybe-uninitialized)
# Which lock guards what, see platform/ThreadSafety.h.
set(CLOCK_CLANG_CXX_WARNINGS -Wthread-safety)
set(CLOCK_GNU_CXX_WARNINGS -Wsuggest-override)

# Of sources that are compiled together: each takes the others for headers of its own.
if(CMAKE_UNITY_BUILD)
  list(APPEND CLOCK_WARNINGS -Wno-shadow)
  list(APPEND CLOCK_GNU_CXX_WARNINGS -Wno-subobject-linkage)
endif()

# gcc's flow warnings misfire on code that a sanitizer has rewritten; the plain builds hold them.
if(NOT (CLOCK_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU"))
  list(APPEND CLOCK_WARNINGS -Werror)
endif()

# For every target of this folder and of those below it that comes after the call.
macro(clock_use_warnings)
  add_compile_options(
    ${CLOCK_WARNINGS}
    "$<$<COMPILE_LANGUAGE:CXX>:${CLOCK_CXX_WARNINGS}>"
    "$<$<CXX_COMPILER_ID:GNU>:${CLOCK_GNU_WARNINGS}>"
    "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:${CLOCK_CLANG_CXX_WARNINGS}>"
    "$<$<COMPILE_LANG_AND_ID:CXX,GNU>:${CLOCK_GNU_CXX_WARNINGS}>")
endmacro()
