# What the compiler and the linker can do against a mistake that somebody exploits, for what ships:
# the plug-in and the host's programs. tests/abi/hardening.py looks at the built files.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX)

# Not every processor has these.
set(CMAKE_REQUIRED_FLAGS -Werror)
check_cxx_compiler_flag(-fstack-clash-protection CLOCK_HAS_STACK_CLASH_PROTECTION)
check_cxx_compiler_flag(-fcf-protection CLOCK_HAS_CF_PROTECTION)
unset(CMAKE_REQUIRED_FLAGS)

# Built for size, only functions with characters on their stack are watched, and no stack is probed:
# the rest adds a tenth to the plug-in on 32-bit ARM, and the telephone has no room for that.
set(CLOCK_HARDENING
    "-fstack-protector$<$<NOT:$<CONFIG:MinSizeRel>>:-strong>"
    "$<$<AND:$<NOT:$<CONFIG:MinSizeRel>>,$<BOOL:${CLOCK_HAS_STACK_CLASH_PROTECTION}>>:-fstack-clash-protection>"
    "$<$<BOOL:${CLOCK_HAS_CF_PROTECTION}>:-fcf-protection>")

# The checks of sizes need the optimiser, and would hide from a sanitizer what it looks for.
set(CLOCK_CHECKED_SIZES "$<CONFIG:RelWithDebInfo,Release,MinSizeRel>")
if(NOT CLOCK_SANITIZE)
  list(APPEND CLOCK_HARDENING
       "$<${CLOCK_CHECKED_SIZES}:-U_FORTIFY_SOURCE>"
       "$<${CLOCK_CHECKED_SIZES}:-D_FORTIFY_SOURCE=3>")
endif()

# For every target of this folder and of those below it that comes after the call.
macro(clock_use_hardening)
  add_compile_options(${CLOCK_HARDENING})
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endmacro()
