# What `cmake --install` puts where, and how another project finds it: by CMake's find_package or by pkg-config.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ks_graph)

install(TARGETS ks_graph EXPORT ks_graph
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT ks_graph
    FILE ks_graph-targets.cmake
    NAMESPACE ks_graph::
    DESTINATION ${package_dir}
    COMPONENT development)

configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/ks_graph-config.cmake.in ${PROJECT_BINARY_DIR}/ks_graph-config.cmake
    INSTALL_DESTINATION ${package_dir})
# Before 1.0, a minor version may break.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ks_graph-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/ks_graph-config.cmake ${PROJECT_BINARY_DIR}/ks_graph-config-version.cmake
    DESTINATION ${package_dir}
    COMPONENT development)

# The prefix is found from where the .pc file lies, so that an unpacked archive works wherever it is put.
file(RELATIVE_PATH KS_GRAPH_PC_PREFIX
    /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
set(KS_GRAPH_PC_PREFIX "\${pcfiledir}/${KS_GRAPH_PC_PREFIX}")
string(REGEX REPLACE "/$" "" KS_GRAPH_PC_PREFIX "${KS_GRAPH_PC_PREFIX}")
get_target_property(library_type ks_graph TYPE)
if(library_type STREQUAL "STATIC_LIBRARY")
    set(KS_GRAPH_PC_CFLAGS " -DKS_GRAPH_STATIC")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/ks_graph.pc.in ${PROJECT_BINARY_DIR}/ks_graph.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ks_graph.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)
# The README with all that its links lead to.
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT development)
foreach(files IN ITEMS docs/*.md docs/*.svg docs/pictures/*.svg examples/hosts/*.cpp examples/hosts/*.txt)
    file(GLOB found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${files})
    list(FILTER found EXCLUDE REGEX CMakeLists)
    get_filename_component(folder ${files} DIRECTORY)
    install(FILES ${found} DESTINATION ${CMAKE_INSTALL_DOCDIR}/${folder} COMPONENT development)
endforeach()
