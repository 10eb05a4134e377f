# Cross build for 64-bit Windows. The posix thread model is pinned: the
# win32 model of GCC 12 has no std::thread or std::mutex.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(SONDARA_TRIPLET x86_64-w64-mingw32)

set(CMAKE_C_COMPILER ${SONDARA_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${SONDARA_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${SONDARA_TRIPLET}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${SONDARA_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# Every program is linked statically, so that it needs nothing beside the
# .exe but the system's own DLLs (with -static-libgcc -static-libstdc++ alone
# the posix thread model still wants libwinpthread-1.dll).
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)

# ctest and test discovery run the .exe files through 64-bit Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh)
