# Runs `program`, under the `emulator` if there is one, and fails unless it ends well and prints exactly what is in the file
# `expected`.

execute_process(COMMAND ${emulator} ${program} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
string(REPLACE "\r\n" "\n" printed "${printed}") # as Windows ends its lines
file(READ ${expected} wanted)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${program} ended with ${status}")
endif()
if(NOT printed STREQUAL wanted)
    message(FATAL_ERROR "${program} printed\n${printed}\ninstead of\n${wanted}")
endif()
