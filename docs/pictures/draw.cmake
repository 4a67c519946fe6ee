# Draws the pictures of the pages with the example host, from the repository's root:
#   cmake -D program=build/release/examples/material_graph/material_graph -D folder=docs/pictures -P docs/pictures/draw.cmake

function(draw name)
    execute_process(COMMAND ${program} ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/chain.mtlx ${ARGN} -o ${folder}/${name}.svg
        COMMAND_ERROR_IS_FATAL ANY)
endfunction()

draw(wired svg)
draw(grouped group box blur sharpen + svg)
draw(inside group box blur sharpen + svg box)
