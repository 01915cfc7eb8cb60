# Builds for aarch64 with Debian's compiler. TARNWICK_ARM64_ROOT is the folder with what is built against, as
# packaging/aarch64 makes it.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARNWICK_ARM64_ROOT)
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_SYSROOT ${TARNWICK_ARM64_ROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${TARNWICK_ARM64_ROOT})
# What Qt runs while it builds is the building system's own.
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake)
# A compiler for another machine does not look for the linker lld where it lies.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/linker)
file(CREATE_LINK /usr/bin/ld.lld ${CMAKE_BINARY_DIR}/linker/ld.lld SYMBOLIC)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -B${CMAKE_BINARY_DIR}/linker)
