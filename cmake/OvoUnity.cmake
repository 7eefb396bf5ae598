# ovo_unity(TARGET): with OVO_UNITY_BUILD (the default), the target's C++ sources compile as
# one unit, which reads the standard and system headers once instead of once per source (the
# library's portable code: 35 s of CPU as 41 units, 10 s as one). The unit is a file of
# includes by names relative to the target's directory, the same text in every clone for the
# compiler cache (CMake's own unity files name each source by its absolute path). A source
# marked SKIP_UNITY_BUILD_INCLUSION keeps a unit of its own.
function(ovo_unity target)
    if(NOT OVO_UNITY_BUILD)
        return()
    endif()
    get_target_property(sources ${target} SOURCES)
    set(unit "")
    set(own "")
    foreach(source ${sources})
        get_source_file_property(skip ${source} SKIP_UNITY_BUILD_INCLUSION)
        if(source MATCHES "\\.cpp$" AND NOT IS_ABSOLUTE "${source}" AND NOT skip)
            string(APPEND unit "#include \"${source}\"\n")
        else()
            list(APPEND own ${source})
        endif()
    endforeach()
    set(file ${CMAKE_CURRENT_BINARY_DIR}/${target}_unit.cpp)
    file(CONFIGURE OUTPUT ${file} CONTENT "${unit}" @ONLY)
    set_target_properties(${target} PROPERTIES SOURCES "${file};${own}")
    target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
endfunction()
