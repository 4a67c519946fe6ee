# What every target of this project is compiled with; nothing of it reaches a host that links the library.

add_library(ks_graph_compiler_settings INTERFACE)

target_compile_features(ks_graph_compiler_settings INTERFACE cxx_std_20)

if(MSVC)
    target_compile_options(ks_graph_compiler_settings INTERFACE /W4 /utf-8)
else()
    target_compile_options(ks_graph_compiler_settings INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
endif()

if(KS_GRAPH_WARNINGS_AS_ERRORS)
    if(MSVC)
        target_compile_options(ks_graph_compiler_settings INTERFACE /WX)
    else()
        target_compile_options(ks_graph_compiler_settings INTERFACE -Werror)
    endif()
endif()

# No compiler runtime has to lie beside a library or a program.
if(MINGW)
    target_link_options(ks_graph_compiler_settings INTERFACE -static)
endif()

if(KS_GRAPH_SANITIZE)
    target_compile_options(ks_graph_compiler_settings INTERFACE
        -fsanitize=${KS_GRAPH_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(ks_graph_compiler_settings INTERFACE -fsanitize=${KS_GRAPH_SANITIZE})
endif()

# The fuzzer sees only code that counts where it goes; what drives it is linked into the fuzzers alone.
if(KS_GRAPH_BUILD_FUZZERS)
    target_compile_options(ks_graph_compiler_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()
