# Headers, the library, a CMake package (find_package(ovosystem) gives ovo::ovosystem)
# and a pkg-config file. Components: `runtime` (what a program needs to run), `dev` (what
# building against the library needs) and `tools` (the ovo tool); they become the Debian
# packages libovosystem0, libovosystem-dev and ovo-tools.
include(CMakePackageConfigHelpers)

set(OVO_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ovosystem)

install(TARGETS ovosystem EXPORT ovosystemTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
if(WIN32)
    # The C interface for other compilers than MinGW-w64: its module-definition file and
    # the import library made from it (src/CMakeLists.txt).
    install(FILES $<TARGET_LINKER_FILE_DIR:ovosystem>/ovosystem.def $<TARGET_LINKER_FILE_DIR:ovosystem>/ovosystem.lib
            DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
    # The license and the history at the top of the ZIP (the Debian packages carry theirs
    # in their copyright and changelog files).
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION . COMPONENT runtime)
else()
    # The Python package on the C interface (the Debian package python3-ovosystem).
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/python/ovosystem DESTINATION lib/python3/dist-packages
            COMPONENT python FILES_MATCHING PATTERN "*.py")
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ovo DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
# ovo/version.h, which src/ generates into the build tree.
install(FILES ${PROJECT_BINARY_DIR}/include/ovo/version.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ovo COMPONENT dev)
install(EXPORT ovosystemTargets NAMESPACE ovo:: DESTINATION ${OVO_CMAKE_DIR} COMPONENT dev)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ovosystemConfig.cmake.in
    ${PROJECT_BINARY_DIR}/ovosystemConfig.cmake INSTALL_DESTINATION ${OVO_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ovosystemConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ovosystemConfig.cmake ${PROJECT_BINARY_DIR}/ovosystemConfigVersion.cmake
    DESTINATION ${OVO_CMAKE_DIR} COMPONENT dev)

# Relocatable: the prefix is found from where the .pc file lies.
file(RELATIVE_PATH OVO_PC_PREFIX_FROM_PCDIR /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/ovosystem.pc.in ${PROJECT_BINARY_DIR}/ovosystem.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ovosystem.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

# On Windows the DLL needs the compiler's run-time DLLs beside it: a machine without
# MinGW-w64 has none. Their copies lose the debug sections (libstdc++ shrinks from over
# 20 MB to about 2 MB); the code is the toolchain's own, byte for byte.
if(WIN32 AND MINGW)
    include(${PROJECT_SOURCE_DIR}/cmake/OvoMingwRuntime.cmake)
    ovo_mingw_runtime_dlls(OVO_RUNTIME_DLLS)
    install(FILES ${OVO_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
    foreach(dll ${OVO_RUNTIME_DLLS})
        get_filename_component(name "${dll}" NAME)
        install(CODE "execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-debug
                      \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/${name}\")"
                COMPONENT runtime)
    endforeach()
endif()
