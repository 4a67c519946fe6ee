// Saves a layout so that a failure never costs the file that is there, loads it again, and shows what is left
// of a file that was cut short.

#include <ks_graph/ks_graph.h>

#include <cstdio>
#include <filesystem>
#include <memory>

using namespace kestrel;
using namespace kestrel::graph;

namespace
{

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Writes a file beside the old one and then puts it in its place. `write` is true when every byte has reached
// the system.
bool save(GraphLayout const& layout, std::filesystem::path const& path)
{
    std::filesystem::path const unfinished = path.string() + ".new";
    bool written = false;
    if (File const file{std::fopen(unfinished.string().c_str(), "wb")})
    {
        FileStreamEndian stream(file.get()); // the same bytes on every machine
        written = layout.write(stream);
    }
    std::error_code failed;
    if (written) std::filesystem::rename(unfinished, path, failed);
    if (written && !failed) return true;
    std::filesystem::remove(unfinished, failed);
    return false;
}

// False when the file is missing or damaged. Then `layout` holds what was whole.
bool load(GraphLayout& layout, std::filesystem::path const& path)
{
    layout.clear();
    File const file{std::fopen(path.string().c_str(), "rb")};
    if (!file) return false;
    FileStreamEndian stream(file.get());
    return layout.read(stream);
}

void print(GraphLayout const& layout)
{
    Array<KS_String, _Wa> names;
    layout.getAllNodeNames(names);
    for (KS_String const& name : names)
    {
        std::printf("  %s", name.c_str());
        if (auto const position = layout.getPositionByNodeName(name))
            std::printf(" at %g, %g", static_cast<double>(position->first),
                        static_cast<double>(position->second));
        if (layout.getCollapsedByNodeName(name).value_or(false)) std::printf(", collapsed");
        std::printf("\n");
    }
    for (NoteDesc const& note : layout.getNotes())
        std::printf("  a note of %s: %s\n", note.getOwnerName().c_str(), note.getText().value_or("").c_str());
}

} // namespace

int main()
{
    std::filesystem::path const path = "layout_save_and_load.layout";
    GraphLayout layout;
    layout.insertNodePosition("root.blur", {120, 40});
    layout.insertNodePosition("root.noise", {0, 40});
    layout.insertNodeCollapsed("root.blur", true);
    NoteDesc note;
    note.setOwnerName("root");
    note.setText("the soft one");
    layout.addNote(note);
    std::printf("saved: %s\n", save(layout, path) ? "yes" : "no");
    auto const size = static_cast<unsigned int>(std::filesystem::file_size(path));
    std::printf("%u bytes\n", size);

    GraphLayout loaded;
    std::printf("loaded: %s\n", load(loaded, path) ? "yes" : "no");
    print(loaded);
    std::printf("as it was saved: %s\n", loaded == layout ? "yes" : "no");

    // Every map, every record and every note stands on its own: what came before the damage is kept.
    std::filesystem::resize_file(path, size - 10);
    std::printf("loaded: %s\n", load(loaded, path) ? "yes" : "no, it was cut short, and this is left");
    print(loaded);

    std::filesystem::remove(path);
    std::printf("loaded: %s\n", load(loaded, path) ? "yes" : "no, there is none");
}
