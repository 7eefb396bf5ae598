# Installs the build into a fresh prefix, then builds and runs a small client against
# it twice: once with find_package(ovosystem), once with the flags of pkg-config. The
# installed ovo tool (when built) must run from the prefix as it stands.
include(${CMAKE_CURRENT_LIST_DIR}/run_step.cmake)

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run(${CMAKE_COMMAND} -S ${CLIENT_DIR} -B ${WORK_DIR}/cmake-client -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-client)
run(${WORK_DIR}/cmake-client/ovo_client)
expect_client_output("${output}")

file(GLOB_RECURSE pcFile ${prefix}/*/ovosystem.pc)
get_filename_component(pcDir "${pcFile}" DIRECTORY)
run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pcDir} pkg-config --cflags --libs ovosystem)
string(STRIP "${output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX} -std=c++17 ${CLIENT_DIR}/main.cpp ${flags} -o ${WORK_DIR}/pkg-config-client)
get_filename_component(libDir "${pcDir}" DIRECTORY)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libDir} ${WORK_DIR}/pkg-config-client)
expect_client_output("${output}")

if(EXPECT_TOOL)
    run(${prefix}/bin/ovo --help)
    if(NOT output MATCHES "^usage: ovo SUBCOMMAND")
        message(FATAL_ERROR "unexpected help of the installed tool: [${output}]")
    endif()
    file(WRITE ${WORK_DIR}/bytes "ATR")
    run(${prefix}/bin/ovo hexdump ${WORK_DIR}/bytes)
    if(NOT output MATCHES "^00000000  41 54 52 ")
        message(FATAL_ERROR "unexpected dump of the installed tool: [${output}]")
    endif()
endif()
