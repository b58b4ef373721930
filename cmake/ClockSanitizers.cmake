# CLOCK_SANITIZE: builds the whole tree with a sanitizer; any report ends the program.
if(CLOCK_SANITIZE)
  # Without "vptr": it compares types by address, and plug-in and framework have separate copies of
  # the type information on purpose.
  add_compile_options(-fsanitize=${CLOCK_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${CLOCK_SANITIZE} -fno-sanitize=vptr)
endif()

# CLOCK_FUZZ: instruments the tree for libFuzzer, and builds the programs of tests/fuzz with it. For
# clang, together with CLOCK_SANITIZE.
if(CLOCK_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,float-cast-overflow)
endif()

# The NTP client runs without its system call filter, which denies calls that sanitizers and coverage
# make.
if(CLOCK_SANITIZE OR CLOCK_FUZZ OR CMAKE_CXX_FLAGS MATCHES "-fprofile-|--coverage")
  set(CLOCK_WITHOUT_FILTER ON)
  add_compile_definitions(CLOCK_WITHOUT_FILTER)
endif()
