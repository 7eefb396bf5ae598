# ovo/ovosystem.h includes every public C++ header, and ovo/c/ovosystem.h every header of
# the C interface, as the README and the reference promise.
#   cmake -DSOURCE_INCLUDE=... -DBUILD_INCLUDE=... -P check_umbrella_header.cmake
file(GLOB_RECURSE headers RELATIVE ${SOURCE_INCLUDE} ${SOURCE_INCLUDE}/ovo/*.h)
file(GLOB_RECURSE generated RELATIVE ${BUILD_INCLUDE} ${BUILD_INCLUDE}/ovo/*.h)
file(READ ${SOURCE_INCLUDE}/ovo/ovosystem.h umbrella)
file(READ ${SOURCE_INCLUDE}/ovo/c/ovosystem.h cUmbrella)
set(missing "")
foreach(header ${headers} ${generated})
    if(header MATCHES "^ovo/(c/)?(ovosystem|export)\\.h$") # export.h: the others' detail
        continue()
    elseif(header MATCHES "^ovo/c/")
        string(FIND "${cUmbrella}" "#include <${header}>" at)
    else()
        string(FIND "${umbrella}" "#include <${header}>" at)
    endif()
    if(at EQUAL -1)
        list(APPEND missing ${header})
    endif()
endforeach()
if(missing)
    list(JOIN missing ", " missing)
    message(FATAL_ERROR "an umbrella header does not include ${missing}")
endif()
