# 64-bit Windows from Debian's MinGW-w64 cross compilers (g++-mingw-w64-x86-64-posix: the
# posix thread model, which std::thread needs).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(TAVI_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${TAVI_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TAVI_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${TAVI_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${TAVI_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The runtime goes into every executable and module, so that TaviClient.exe and its engine run
# on a machine that has none of MinGW's libraries.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# Under wine, for tests and try_run.
find_program(TAVI_WINE wine64 PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(TAVI_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${TAVI_WINE})
endif()
