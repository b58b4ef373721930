# Compiler and linker options that make bugs harder to exploit, for the plug-in and the host's
# programs. tests/abi/hardening.py checks the built files.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX)

# Not every processor supports these.
set(CMAKE_REQUIRED_FLAGS -Werror)
check_cxx_compiler_flag(-fstack-clash-protection CLOCK_HAS_STACK_CLASH_PROTECTION)
check_cxx_compiler_flag(-fcf-protection CLOCK_HAS_CF_PROTECTION)
unset(CMAKE_REQUIRED_FLAGS)

# A build for size protects only functions with character arrays on their stack, and does not probe
# the stack: the full set makes the plug-in a tenth larger on 32-bit ARM, and the telephone has no
# room for that.
set(CLOCK_HARDENING
    "-fstack-protector$<$<NOT:$<CONFIG:MinSizeRel>>:-strong>"
    "$<$<AND:$<NOT:$<CONFIG:MinSizeRel>>,$<BOOL:${CLOCK_HAS_STACK_CLASH_PROTECTION}>>:-fstack-clash-protection>"
    "$<$<BOOL:${CLOCK_HAS_CF_PROTECTION}>:-fcf-protection>")

# Checks of buffer sizes need the optimiser, and would hide faults from a sanitizer.
set(CLOCK_CHECKED_SIZES "$<CONFIG:RelWithDebInfo,Release,MinSizeRel>")
if(NOT CLOCK_SANITIZE)
  list(APPEND CLOCK_HARDENING
       "$<${CLOCK_CHECKED_SIZES}:-U_FORTIFY_SOURCE>"
       "$<${CLOCK_CHECKED_SIZES}:-D_FORTIFY_SOURCE=3>")
endif()

# For every target that is defined after the call, in this folder and below it.
macro(clock_use_hardening)
  add_compile_options(${CLOCK_HARDENING})
  add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
endmacro()
