# Installs the build into a fresh prefix, then builds and runs a small client against
# it twice: once with find_package(ovosystem), once with the flags of pkg-config. The
# installed ovo tool (when built) must run from the prefix as it stands.
function(run expected)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0 OR NOT out MATCHES "${expected}")
        message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}\n${err}")
    endif()
    set(output "${out}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK_DIR}/prefix)
set(clientOutput "^parsed 4660, bytes 12 34 AB \n$")
file(REMOVE_RECURSE ${WORK_DIR})
run("" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run("" ${CMAKE_COMMAND} -S ${CLIENT_DIR} -B ${WORK_DIR}/cmake-client -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_CXX_COMPILER=${CXX})
run("" ${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-client)
run("${clientOutput}" ${WORK_DIR}/cmake-client/ovo_client)

file(GLOB_RECURSE pcFile ${prefix}/*/ovosystem.pc)
get_filename_component(pcDir "${pcFile}" DIRECTORY)
get_filename_component(libDir "${pcDir}" DIRECTORY)
run("" ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pcDir} pkg-config --cflags --libs ovosystem)
separate_arguments(flags UNIX_COMMAND "${output}")
run("" ${CXX} -std=c++17 ${CLIENT_DIR}/main.cpp ${flags} -o ${WORK_DIR}/pkg-config-client)
run("${clientOutput}" ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libDir} ${WORK_DIR}/pkg-config-client)

if(EXPECT_TOOL)
    run("^usage: ovo SUBCOMMAND" ${prefix}/bin/ovo --help)
    file(WRITE ${WORK_DIR}/bytes "ATR")
    run("^00000000  41 54 52 " ${prefix}/bin/ovo hexdump ${WORK_DIR}/bytes)
endif()
