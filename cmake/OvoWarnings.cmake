# Our own code builds warning-free; third-party code keeps its own flags.
function(ovo_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
