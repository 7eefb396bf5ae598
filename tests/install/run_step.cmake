# run(COMMAND...): runs a step of an install check; stops the check with the step's output
# when it fails, and leaves its standard output in `output`.
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
