# 32-bit ARM Linux with hardware floating point, as on the telephone; programs run under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# No notes about classes that older compilers passed differently: no object of such a compiler is linked.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
# Not with qemu's -L FOLDER: qemu then looks up every path that a program opens in that folder first,
# even "/", and a program that creates folders from the root down creates them there.
set(cross_libraries /usr/arm-linux-gnueabihf/lib)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm ${cross_libraries}/ld-linux-armhf.so.3 --library-path
                                  ${cross_libraries})
# The prefixes that a project names are those of the device: they are not looked for below the first.
set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabihf ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
