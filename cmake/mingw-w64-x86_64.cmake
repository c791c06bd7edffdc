# Cross-compiling for 64-bit Windows with mingw-w64 (Debian: g++-mingw-w64-x86-64-posix).
# The -posix compilers: the win32 thread model lacks std::thread and std::mutex.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(MVGOZ_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${MVGOZ_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${MVGOZ_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${MVGOZ_MINGW_TRIPLE}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${MVGOZ_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Static runtime: the programs then need only system DLLs, so wine runs them as they are.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
