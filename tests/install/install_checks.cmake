# What the install checks share. run(COMMAND...): a step that stops the check with its
# output when it fails, and leaves its standard output in `output`.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}\n${err}")
    endif()
    set(output "${out}" PARENT_SCOPE)
endfunction()

function(expect_client_output text)
    if(NOT text MATCHES "^parsed 4660, bytes 12 34 AB \r?\n$")
        message(FATAL_ERROR "unexpected client output: [${text}]")
    endif()
endfunction()

# The installed library's directory under a prefix (lib, or the multiarch one of Debian).
function(library_directory prefix out)
    file(GLOB_RECURSE pcFile ${prefix}/*/ovosystem.pc)
    get_filename_component(pcDir "${pcFile}" DIRECTORY)
    get_filename_component(libDir "${pcDir}" DIRECTORY)
    set(${out} ${libDir} PARENT_SCOPE)
endfunction()

# Builds the client of CLIENT_DIR against an installed prefix twice, through
# find_package and through pkg-config's flags, and runs both without LD_LIBRARY_PATH: the
# CMake build writes the library's directory into the client, the pkg-config client is
# linked with it as the README says (-Wl,-rpath and pkg-config's libdir).
function(check_client_both_ways prefix work)
    library_directory(${prefix} libDir)
    set(pkgConfig ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${libDir}/pkgconfig pkg-config)
    set(withoutLibraryPath ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH)

    run(${CMAKE_COMMAND} -S ${CLIENT_DIR} -B ${work}/cmake-client -DCMAKE_PREFIX_PATH=${prefix}
        -DCMAKE_CXX_COMPILER=${CXX})
    run(${CMAKE_COMMAND} --build ${work}/cmake-client)
    run(${withoutLibraryPath} ${work}/cmake-client/ovo_client)
    expect_client_output("${output}")

    run(${pkgConfig} --cflags --libs ovosystem)
    string(STRIP "${output}" flags)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    run(${pkgConfig} --variable=libdir ovosystem)
    string(STRIP "${output}" pcLibDir)
    run(${CXX} -std=c++17 ${CLIENT_DIR}/main.cpp ${flags} -Wl,-rpath,${pcLibDir} -o ${work}/pkg-config-client)
    run(${withoutLibraryPath} ${work}/pkg-config-client)
    expect_client_output("${output}")
endfunction()
