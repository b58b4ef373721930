# Warnings of gcc and clang. They are errors if CMAKE_COMPILE_WARNING_AS_ERROR is set, as ./dev and the
# presets of the workstation do.
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
# gcc falsely reports the value of an empty std::optional as uninitialised memory.
set(CLOCK_GNU_WARNINGS -Wlogical-op -Wduplicated-cond -Wno-maybe-uninitialized)
# Thread-safety analysis: platform/ThreadSafety.h.
set(CLOCK_CLANG_CXX_WARNINGS -Wthread-safety)
set(CLOCK_GNU_CXX_WARNINGS -Wsuggest-override)

# A unity build includes sources like headers. These warnings would then report harmless names.
set(CLOCK_TOGETHER "$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>")
list(APPEND CLOCK_WARNINGS "$<${CLOCK_TOGETHER}:-Wno-shadow>")
list(APPEND CLOCK_GNU_CXX_WARNINGS "$<${CLOCK_TOGETHER}:-Wno-subobject-linkage>")

# gcc's flow warnings are wrong in code that a sanitizer has instrumented; plain builds have them.
if(CLOCK_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
endif()

# For every target that is defined after the call, in this folder and below it.
macro(clock_use_warnings)
  add_compile_options(
    ${CLOCK_WARNINGS}
    "$<$<COMPILE_LANGUAGE:CXX>:${CLOCK_CXX_WARNINGS}>"
    "$<$<CXX_COMPILER_ID:GNU>:${CLOCK_GNU_WARNINGS}>"
    "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:${CLOCK_CLANG_CXX_WARNINGS}>"
    "$<$<COMPILE_LANG_AND_ID:CXX,GNU>:${CLOCK_GNU_CXX_WARNINGS}>")
endmacro()
