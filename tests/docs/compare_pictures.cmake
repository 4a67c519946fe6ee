# Draws the pictures of the pages again, with `program` into `folder`, and fails unless they are those of `pictures` but for the
# numbers in them.

file(REMOVE_RECURSE ${folder})
file(MAKE_DIRECTORY ${folder})
include(${pictures}/draw.cmake)

file(GLOB drawn RELATIVE ${folder} ${folder}/*.svg)
file(GLOB shown RELATIVE ${pictures} ${pictures}/*.svg)
if(NOT drawn STREQUAL shown)
    message(FATAL_ERROR "The pictures are ${shown}, but ${drawn} are drawn")
endif()
foreach(name IN LISTS drawn)
    file(READ ${folder}/${name} now)
    file(READ ${pictures}/${name} before)
    string(REGEX REPLACE "-?[0-9]+(\\.[0-9]+)?" "" now "${now}")
    string(REGEX REPLACE "-?[0-9]+(\\.[0-9]+)?" "" before "${before}")
    if(NOT now STREQUAL before)
        message(FATAL_ERROR "${name} shows another graph: draw it again, as docs/pictures/draw.cmake says")
    endif()
endforeach()
