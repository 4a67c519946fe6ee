# pugixml::pugixml: the installed package, or built from the sources in KS_GRAPH_PUGIXML_SOURCE_DIR.

set(KS_GRAPH_PUGIXML_SOURCE_DIR "" CACHE PATH "Where pugixml's sources are, if it is not installed")

find_package(pugixml QUIET)
if(pugixml_FOUND)
    return()
endif()

set(pugixml_sources ${KS_GRAPH_PUGIXML_SOURCE_DIR}/src)
if(NOT EXISTS ${pugixml_sources}/pugixml.cpp)
    message(FATAL_ERROR "The example needs pugixml, which is neither installed nor are its sources in "
        "KS_GRAPH_PUGIXML_SOURCE_DIR (\"${KS_GRAPH_PUGIXML_SOURCE_DIR}\"). On Debian, "
        "`tools/fetch_pugixml_source.sh FOLDER` gets them; -DKS_GRAPH_BUILD_EXAMPLES=OFF leaves the example out.")
endif()
add_library(pugixml STATIC ${pugixml_sources}/pugixml.cpp)
add_library(pugixml::pugixml ALIAS pugixml)
target_include_directories(pugixml SYSTEM PUBLIC ${pugixml_sources})
