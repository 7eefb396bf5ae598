# The Debian packages: libovosystem0 (the shared library), libovosystem-dev (headers, the
# link, the CMake and pkg-config files), python3-ovosystem (the Python package) and
# ovo-tools (the ovo tool). dpkg-shlibdeps finds what the binaries need; only the ties of
# the -dev and the Python package to the library are written here, since neither holds a
# binary to read them from.
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev python)
if(TARGET ovo)
    list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "ovosystem developers <maintainers@ovosystem.org>")
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON) # the packages carry no debug information
set(debianVersion ${PROJECT_VERSION}-1)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libovosystem${PROJECT_VERSION_MAJOR})
# Its shlibs file is written here: the packager would make it by running `file` on every
# file of every package, some 600 with the API reference (half a minute).
set(libraryTree ${PROJECT_BINARY_DIR}/debian/${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME})
file(WRITE ${libraryTree}/DEBIAN/shlibs
     "libovosystem ${PROJECT_VERSION_MAJOR} ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers ${libraryTree}/DEBIAN/shlibs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}: shared library
 Text and number helpers, a name-value collection, logging, a command-line
 option processor, named inter-process primitives, smart cards over PC/SC,
 serial ports and platform services, in one C++17 library.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libovosystem-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${debianVersion})")
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF) # no binary: headers, the link, the API reference
set(CPACK_COMPONENT_DEV_DESCRIPTION "${PROJECT_DESCRIPTION}: development files
 The headers of the ovosystem library, its link for the linker, a CMake package
 (find_package(ovosystem) gives ovo::ovosystem) and a pkg-config file.")
# The API reference, registered with doc-base as Debian's documentation browsers expect.
if(OVO_INSTALL_REFERENCE)
    string(APPEND CPACK_COMPONENT_DEV_DESCRIPTION "\n The API reference in HTML.")
    install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/doc-base DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc-base
            RENAME ${CPACK_DEBIAN_DEV_PACKAGE_NAME}.libovosystem-api COMPONENT dev)
endif()

# dpkg-shlibdeps learns which package gives libovosystem.so.N as it does in a Debian
# source build: from the library's package build tree (DEBIAN/shlibs beside the library).
file(MAKE_DIRECTORY ${libraryTree}${CMAKE_INSTALL_FULL_LIBDIR})
file(CREATE_LINK ${PROJECT_BINARY_DIR}/src/libovosystem.so.${PROJECT_VERSION_MAJOR}
     ${libraryTree}${CMAKE_INSTALL_FULL_LIBDIR}/libovosystem.so.${PROJECT_VERSION_MAJOR} SYMBOLIC)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${libraryTree}${CMAKE_INSTALL_FULL_LIBDIR})

# Pure Python, loading libovosystem.so.N through ctypes.
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-ovosystem)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3, ${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (>= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "${PROJECT_DESCRIPTION}: Python package
 Smart cards over PC/SC, serial ports, message channels between processes,
 named mutexes and events, and logging, from Python: a pure-Python package on
 the C interface of the ovosystem library, through ctypes.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ovo-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "${PROJECT_DESCRIPTION}: the ovo tool
 A command-line tool on the ovosystem library: card readers and command units,
 serial devices, message channels between processes, hex dumps and scripts.")

# Each package carries the copyright file and the changelog, compressed as Debian wants.
set(changelog ${PROJECT_BINARY_DIR}/debian/changelog.Debian.gz)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/debian)
execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/cmake/debian/changelog OUTPUT_FILE ${changelog})
foreach(component ${CPACK_COMPONENTS_ALL})
    string(TOUPPER ${component} upper)
    install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright ${changelog}
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
            COMPONENT ${component})
endforeach()
