# Test programs of a Windows cross build run under Wine, through CTest's emulator.
# The wrapper finds ovosystem.dll beside the programs and the MinGW run-time DLLs
# (libstdc++, libgcc, winpthread) through WINEPATH.
set(OVO_WINE_LOADER /usr/lib/wine/wine64 CACHE FILEPATH "Wine loader for the Windows test programs")
set(OVO_WINESERVER /usr/lib/wine/wineserver64 CACHE FILEPATH "Wine server of the Windows test programs")
set(OVO_WINEPREFIX ${PROJECT_BINARY_DIR}/wineprefix CACHE PATH "Wine prefix of this build's test runs")

include(${CMAKE_CURRENT_LIST_DIR}/OvoMingwRuntime.cmake)
ovo_mingw_runtime_dlls(runtimeDlls)
set(runtimeDirs "")
foreach(dll ${runtimeDlls})
    get_filename_component(dir "${dll}" DIRECTORY)
    get_filename_component(dir "${dir}" REALPATH)
    list(APPEND runtimeDirs "Z:${dir}")
endforeach()
list(REMOVE_DUPLICATES runtimeDirs)
list(JOIN runtimeDirs ";" OVO_WINEPATH)

configure_file(${PROJECT_SOURCE_DIR}/cmake/run-under-wine.sh.in ${PROJECT_BINARY_DIR}/run-under-wine.sh
               @ONLY FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
               WORLD_READ WORLD_EXECUTE)
set(CMAKE_CROSSCOMPILING_EMULATOR ${PROJECT_BINARY_DIR}/run-under-wine.sh)
