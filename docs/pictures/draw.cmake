# Draws the pictures of the pages with the example host, from the repository's root:
#   cmake -D program=build/release/examples/material_graph/material_graph -D folder=docs/pictures -P docs/pictures/draw.cmake

function(draw name document)
    execute_process(COMMAND ${program} ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/${document} ${ARGN} -o ${folder}/${name}.svg
        COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The nodes stand at the same places before they are wired.
draw(wired chain.mtlx layout save ${folder}/places.layout + svg)
draw(nodes nodes.mtlx layout load ${folder}/places.layout + svg)
file(REMOVE ${folder}/places.layout)
draw(grouped chain.mtlx group box blur sharpen + svg)
draw(inside chain.mtlx group box blur sharpen + svg box)
