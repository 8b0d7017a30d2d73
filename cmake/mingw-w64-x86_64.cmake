# Cross-build for 64-bit Windows with mingw-w64. The posix thread model is
# needed for std::thread and std::mutex. The C++ runtime (libstdc++, libgcc,
# winpthread) is linked as DLLs, never statically: connectkit.dll and
# log4cplus.dll hand std::wstring and wide output streams to each other, and
# two static copies of libstdc++ would each have their own locale facet ids
# and stream state. The runtime DLLs ship beside connectkit.dll.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR wine)
