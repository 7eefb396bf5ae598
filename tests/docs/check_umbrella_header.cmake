# ovo/ovosystem.h includes every public header, as the README and the reference promise.
#   cmake -DSOURCE_INCLUDE=... -DBUILD_INCLUDE=... -P check_umbrella_header.cmake
file(GLOB_RECURSE headers RELATIVE ${SOURCE_INCLUDE} ${SOURCE_INCLUDE}/ovo/*.h)
file(GLOB_RECURSE generated RELATIVE ${BUILD_INCLUDE} ${BUILD_INCLUDE}/ovo/*.h)
file(READ ${SOURCE_INCLUDE}/ovo/ovosystem.h umbrella)
set(missing "")
foreach(header ${headers} ${generated})
    string(FIND "${umbrella}" "#include <${header}>" at)
    if(at EQUAL -1 AND NOT header MATCHES "^ovo/(ovosystem|export)\\.h$") # export.h: the others' detail
        list(APPEND missing ${header})
    endif()
endforeach()
if(missing)
    list(JOIN missing ", " missing)
    message(FATAL_ERROR "ovo/ovosystem.h does not include ${missing}")
endif()
