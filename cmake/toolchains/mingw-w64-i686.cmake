# Windows 32-bit, cross-built with MinGW-w64.
set(OVO_MINGW_ARCH i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
