// LeakSanitizer looks for this function by its name.
extern "C" char const* __lsan_default_suppressions();

/// Graphviz keeps a little memory of every layout for itself.
extern "C" char const* __lsan_default_suppressions()
{
    return "leak:libgvc\n";
}
