# Installs the build into a fresh prefix (or takes PREFIX, the root of unpacked
# packages), then builds and runs a small client against it twice: once with
# find_package(ovosystem), once with the flags of pkg-config. The installed ovo tool
# (when built) must run from the prefix and find its library.
include(${CMAKE_CURRENT_LIST_DIR}/install_checks.cmake)

set(prefix ${PREFIX})
if(NOT prefix)
    set(prefix ${WORK_DIR}/prefix)
    file(REMOVE_RECURSE ${WORK_DIR})
    run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
endif()

check_client_both_ways(${prefix} ${WORK_DIR})

if(EXPECT_TOOL)
    library_directory(${prefix} libDir) # a tool of the system's prefix has no search path of its own
    set(ovo ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libDir} ${prefix}/bin/ovo)
    run(${ovo} --version)
    if(NOT output MATCHES "^ovo [0-9]+\\.[0-9]+\\.[0-9]+, library [0-9]+\\.[0-9]+\\.[0-9]+\n$")
        message(FATAL_ERROR "unexpected version of the installed tool: [${output}]")
    endif()
endif()
