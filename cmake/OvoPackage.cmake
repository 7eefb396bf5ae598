# Packages of the install: on Windows a ZIP (ovosystem-VERSION-win64.zip or -win32.zip)
# that holds the DLL with its run-time, the import library, the headers and the CMake
# and pkg-config files; unpacked anywhere, it is a prefix for find_package. Elsewhere
# Debian packages, one per install component (`cpack -G DEB` in a build configured with
# -DCMAKE_INSTALL_PREFIX=/usr).
set(CPACK_PACKAGE_NAME ovosystem)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
if(WIN32)
    set(CPACK_GENERATOR ZIP)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        set(CPACK_SYSTEM_NAME win64)
    else()
        set(CPACK_SYSTEM_NAME win32)
    endif()
    set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
else()
    include(${PROJECT_SOURCE_DIR}/cmake/OvoDebian.cmake)
endif()
include(CPack)
