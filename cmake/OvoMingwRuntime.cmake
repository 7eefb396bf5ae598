# The MinGW-w64 run-time DLLs that programs of this compiler load (libstdc++, the libgcc of
# the target's exception model, winpthread), asked of the compiler itself so that no path
# of one toolchain or distribution is written down here.
function(ovo_mingw_runtime_dlls out)
    set(found "")
    foreach(dll libstdc++-6.dll libwinpthread-1.dll libgcc_s_seh-1.dll libgcc_s_dw2-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
                        OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(IS_ABSOLUTE "${path}" AND EXISTS "${path}")
            get_filename_component(path "${path}" ABSOLUTE)
            list(APPEND found "${path}")
        endif()
    endforeach()
    set(${out} ${found} PARENT_SCOPE)
endfunction()
