# Writes the module-definition file of the C interface, DEF, from the exports that the
# linker wrote for the whole DLL, EXPORTS: the C functions only, undecorated, as the DLL
# exports them (the C++ names mean nothing to another compiler).
file(STRINGS ${EXPORTS} lines REGEX "^[ \t]*ovo_[A-Za-z0-9_]+")
set(text "LIBRARY ovosystem.dll\nEXPORTS\n")
foreach(line ${lines})
    string(REGEX MATCH "ovo_[A-Za-z0-9_]+" name "${line}")
    string(APPEND text "    ${name}\n")
endforeach()
if(NOT lines)
    message(FATAL_ERROR "${EXPORTS} names no function of the C interface")
endif()
file(WRITE ${DEF} "${text}")
