# Windows 64-bit, cross-built with MinGW-w64.
set(OVO_MINGW_ARCH x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
