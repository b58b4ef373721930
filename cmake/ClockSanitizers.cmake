# CLOCK_SANITIZE: the whole tree, plug-in included, under a sanitizer; any report ends the program.
if(CLOCK_SANITIZE)
  # No "vptr": the plug-in's type information is its own on purpose, and that check compares types of
  # the two sides of the seam by address.
  add_compile_options(-fsanitize=${CLOCK_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${CLOCK_SANITIZE} -fno-sanitize=vptr)
endif()

# CLOCK_FUZZ: the tree tells libFuzzer where it has been, and the programs of tests/fuzz look for
# inputs. For clang, together with CLOCK_SANITIZE.
if(CLOCK_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,float-cast-overflow)
endif()

# What these and coverage build into a program makes system calls of its own: no filter then.
if(CLOCK_SANITIZE OR CLOCK_FUZZ OR CMAKE_CXX_FLAGS MATCHES "-fprofile-|--coverage")
  set(CLOCK_WITHOUT_FILTER ON)
  add_compile_definitions(CLOCK_WITHOUT_FILTER)
endif()
