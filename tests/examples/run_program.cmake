# Runs `program`, under the `emulator` if there is one, on a copy of `document` in the folder `written`, and fails unless
# it takes names of any letters and prints byte for byte what it writes to a file.

set(copy ${written}/ß漆🎨.mtlx)
file(REMOVE_RECURSE ${written})
file(MAKE_DIRECTORY ${written})
configure_file(${document} ${copy} COPYONLY)

# Runs the program with the arguments; what it prints goes into the file `printed`, its messages into `messages`.
function(run expected)
    execute_process(COMMAND ${emulator} ${program} ${ARGN}
        OUTPUT_FILE ${written}/printed ERROR_VARIABLE messages RESULT_VARIABLE status)
    if(NOT status EQUAL expected)
        message(FATAL_ERROR "${ARGN} ended with ${status}: ${messages}")
    endif()
    set(messages "${messages}" PARENT_SCOPE)
endfunction()

run(0 ${copy} xml -o ${written}/ß漆🎨.xml)
run(0 ${copy} xml)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${written}/printed ${written}/ß漆🎨.xml RESULT_VARIABLE differ)
if(differ)
    message(FATAL_ERROR "${written}/printed differs from what was written to a file")
endif()
file(READ ${written}/printed bytes HEX)
string(REGEX MATCHALL ".." bytes "${bytes}")
if(bytes MATCHES ";0d;" OR NOT bytes MATCHES ";0a;")
    message(FATAL_ERROR "${written}/printed has other line ends than line feeds")
endif()

run(2 ${copy} find ß漆🎨)
if(NOT messages STREQUAL "find: error: there is no pin 'ß漆🎨'\n")
    message(FATAL_ERROR "The message is not as expected: ${messages}")
endif()
