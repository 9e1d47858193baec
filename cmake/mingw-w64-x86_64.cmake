# Cross build for 64-bit Windows with Debian's MinGW-w64 compilers (g++-mingw-w64-x86-64-posix):
#   cmake -S . -B build-win -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake
# The posix flavour gives std::thread and std::mutex; everything is linked statically, so the
# programs run on a bare Windows machine without the compiler's DLLs.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(TAVRIN_MINGW_PREFIX x86_64-w64-mingw32)
find_program(CMAKE_CXX_COMPILER NAMES ${TAVRIN_MINGW_PREFIX}-g++-posix ${TAVRIN_MINGW_PREFIX}-g++ REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${TAVRIN_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${TAVRIN_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
# No unit tests here: they run in the native build; the Windows programs are checked under wine.
set(BUILD_TESTING OFF CACHE BOOL "Build the unit tests")
