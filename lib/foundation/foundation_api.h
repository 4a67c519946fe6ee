/// @file
/// Export macro of the foundation types. The only place where the compiler's export syntax is spelled;
/// `ks_graph/ks_graph_api.h` reuses it.
#pragma once

#if defined(_WIN32)
#define KS_EXPORTED __declspec(dllexport)
#define KS_IMPORTED __declspec(dllimport)
#else
/// For a symbol that the library gives.
#define KS_EXPORTED __attribute__((visibility("default")))
/// For a symbol that a host takes from the library.
#define KS_IMPORTED __attribute__((visibility("default")))
#endif

/// The build defines KS_GRAPH_BUILD while it compiles the shared library, and KS_GRAPH_STATIC for a static
/// one (for its users too); a host that links the shared library defines neither.
#if defined(KS_GRAPH_STATIC)
#define KS_FOUNDATION_API
#elif defined(KS_GRAPH_BUILD)
#define KS_FOUNDATION_API KS_EXPORTED
#else
#define KS_FOUNDATION_API KS_IMPORTED
#endif

/// Marks the declaration of a template's instance that the library holds. Visual C++ has the export at the
/// instance's definition alone.
#if defined(_MSC_VER) && defined(KS_GRAPH_BUILD)
#define KS_FOUNDATION_INSTANCE_API
#else
#define KS_FOUNDATION_INSTANCE_API KS_FOUNDATION_API
#endif

/// Lets the compiler check printf-style arguments; both indexes count from 1, `this` included.
#if defined(__MINGW32__) && !defined(__clang__)
#define KS_PRINTF_LIKE(formatIndex, firstArgument)                                                           \
    __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#elif defined(__GNUC__)
#define KS_PRINTF_LIKE(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define KS_PRINTF_LIKE(formatIndex, firstArgument)
#endif
