# Cross build for 32-bit Windows, the product's own target. Nothing here can
# run it (no 32-bit Wine), so no emulator is set: it is compiled only.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(SONDARA_TRIPLET i686-w64-mingw32)

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
