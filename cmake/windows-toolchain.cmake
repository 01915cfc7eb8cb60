# Programs for Windows on x86_64, made by Debian's cross compiler. TARNWICK_DEPS is the folder with the libraries
# that were built for it, TARNWICK_WINE what runs such a program here; ./windows gives both.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARNWICK_DEPS TARNWICK_WINE)

set(CMAKE_FIND_ROOT_PATH ${TARNWICK_DEPS} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
if(TARNWICK_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${TARNWICK_WINE})
endif()

# A program is one file that needs nothing but the system.
# This compiler takes a search in the rest of a text for one beyond all memory.
set(CMAKE_CXX_FLAGS_INIT "-isystem ${TARNWICK_DEPS}/include -DSODIUM_STATIC -Wno-stringop-overread")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -L${TARNWICK_DEPS}/lib")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")
