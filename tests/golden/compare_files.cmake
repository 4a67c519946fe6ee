# Runs `program`, under the `emulator` if there is one, on the folder `written` and fails unless it leaves there exactly
# the files of the folder `golden`.

file(REMOVE_RECURSE ${written})
file(MAKE_DIRECTORY ${written})
execute_process(COMMAND ${emulator} ${program} ${written} RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${program} ended with ${status}")
endif()

file(GLOB names RELATIVE ${written} ${written}/*)
file(GLOB wanted RELATIVE ${golden} ${golden}/*)
if(NOT names STREQUAL wanted)
    message(FATAL_ERROR "${program} wrote\n${names}\ninstead of\n${wanted}")
endif()
foreach(name IN LISTS names)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${written}/${name} ${golden}/${name}
        RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${written}/${name} differs from ${golden}/${name}")
    endif()
endforeach()
