# Packs the Windows build as its ZIP, unpacks it into a fresh directory, builds the client
# against it with find_package, and runs the client (placed beside the package's DLLs, as
# an application ships) and the package's ovo.exe in a new Wine prefix whose search path
# holds no compiler directory: the package alone must make them start.
include(${CMAKE_CURRENT_LIST_DIR}/install_checks.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
run(${CPACK} -G ZIP --config ${BUILD_DIR}/CPackConfig.cmake)
file(GLOB zip ${BUILD_DIR}/packages/ovosystem-*-win*.zip)
list(LENGTH zip count)
if(NOT count EQUAL 1)
    message(FATAL_ERROR "expected one ZIP in ${BUILD_DIR}/packages, found [${zip}]")
endif()
set(root ${WORK_DIR}/unpacked)
file(MAKE_DIRECTORY ${root})
run(${CMAKE_COMMAND} -E chdir ${root} ${CMAKE_COMMAND} -E tar xf ${zip})
foreach(part bin/ovosystem.dll bin/ovo.exe bin/libstdc++-6.dll bin/libwinpthread-1.dll include/ovo/ovosystem.h
             include/ovo/c/ovosystem.h lib/cmake/ovosystem/ovosystemConfig.cmake lib/ovosystem.def lib/ovosystem.lib
             LICENSE CHANGELOG.md)
    if(NOT EXISTS ${root}/${part})
        message(FATAL_ERROR "the package lacks ${part}")
    endif()
endforeach()

run(${CMAKE_COMMAND} -S ${CLIENT_DIR} -B ${WORK_DIR}/client -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}
    -Dovosystem_DIR=${root}/lib/cmake/ovosystem) # the toolchain confines searches to its own root
run(${CMAKE_COMMAND} --build ${WORK_DIR}/client)
file(COPY ${WORK_DIR}/client/ovo_client.exe DESTINATION ${root}/bin)

# Wine's helper processes inherit the program's output and outlive it, so the output goes
# through a file, not a pipe that they would hold open.
set(wine ${CMAKE_COMMAND} -E env --unset=WINEPATH WINEPREFIX=${WORK_DIR}/wineprefix WINEDEBUG=-all)
execute_process(COMMAND ${wine} ${WINE} ${root}/bin/ovo_client.exe
                RESULT_VARIABLE rc OUTPUT_FILE ${WORK_DIR}/client.out ERROR_FILE ${WORK_DIR}/client.err)
execute_process(COMMAND ${wine} ${WINE} ${root}/bin/ovo.exe --version
                RESULT_VARIABLE toolRc OUTPUT_FILE ${WORK_DIR}/ovo.out ERROR_FILE ${WORK_DIR}/ovo.err)
execute_process(COMMAND ${wine} ${WINESERVER} -k OUTPUT_QUIET ERROR_QUIET)
file(READ ${WORK_DIR}/ovo.out toolOutput)
if(NOT toolRc EQUAL 0 OR NOT toolOutput MATCHES "^ovo [0-9.]+, library [0-9.]+")
    message(FATAL_ERROR "the package's ovo.exe did not run (${toolRc}): ${toolOutput}")
endif()
file(READ ${WORK_DIR}/client.out clientOutput)
if(NOT rc EQUAL 0)
    file(READ ${WORK_DIR}/client.err clientErrors)
    message(FATAL_ERROR "the client did not run from the package (${rc}): ${clientOutput}${clientErrors}")
endif()
expect_client_output("${clientOutput}")
