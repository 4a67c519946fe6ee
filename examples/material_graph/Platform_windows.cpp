#include "Platform.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <shellapi.h>
#include <sys/stat.h>

#include <cstdlib>
#include <memory>
#include <string_view>
#include <system_error>

namespace material_graph
{

namespace fs = std::filesystem;

namespace
{

struct LocalEnd
{
    void operator()(void* memory) const { ::LocalFree(memory); }
};

struct HandleEnd
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const
    {
        if (handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
    }
};

using Handle = std::unique_ptr<HANDLE, HandleEnd>;

std::string utf8Of(std::wstring_view text)
{
    int const length = static_cast<int>(text.size());
    auto const convert = [&](char* to, int room)
    { return ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, to, room, nullptr, nullptr); };
    std::string utf8(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
    convert(utf8.data(), static_cast<int>(utf8.size()));
    return utf8;
}

// Its name without any links; the wanted one where the system knows no other.
fs::path finalPath(HANDLE file, fs::path const& wanted)
{
    std::wstring path(::GetFinalPathNameByHandleW(file, nullptr, 0, 0), L'\0');
    DWORD const length = ::GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()), 0);
    if (length == 0 || length >= path.size()) return wanted;
    path.resize(length);
    return path;
}

bool isRegular(HANDLE file)
{
    BY_HANDLE_FILE_INFORMATION information{};
    return ::GetFileType(file) == FILE_TYPE_DISK && ::GetFileInformationByHandle(file, &information) != 0 &&
           (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

} // namespace

// Those of `main` are in the letters of the system's own code page only.
std::vector<std::string> programArguments(int, char**)
{
    int count = 0;
    std::unique_ptr<wchar_t*, LocalEnd> const words(::CommandLineToArgvW(::GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(utf8Of(words.get()[i]));
    return arguments;
}

void prepareOutput()
{
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);
    // The console outlives the program.
    static UINT const before = ::GetConsoleOutputCP();
    if (before == 0 || ::SetConsoleOutputCP(CP_UTF8) == 0) return;
    std::atexit([] { ::SetConsoleOutputCP(before); });
}

bool isErrorTerminal()
{
    HANDLE const console = ::GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return ::GetConsoleMode(console, &mode) != 0 &&
           ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

int processId()
{
    return ::_getpid();
}

std::FILE* openFile(fs::path const& path, char const* mode)
{
    return ::_wfopen(path.c_str(), fs::path(mode).c_str());
}

// Not every C library of this system knows the mode "x".
std::FILE* createFile(fs::path const& path)
{
    int const file = ::_wopen(path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_BINARY, _S_IREAD | _S_IWRITE);
    return file == -1 ? nullptr : ::_fdopen(file, "wb");
}

bool flushToDisk(std::FILE* file)
{
    return ::_commit(::_fileno(file)) == 0;
}

bool isWritable(fs::path const& path)
{
    constexpr int forWriting = 2;
    return ::_waccess(path.c_str(), forWriting) == 0;
}

Destination destinationOf(fs::path const& name)
{
    Handle const file(::CreateFileW(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (file.get() == INVALID_HANDLE_VALUE) return {name, true};
    if (!isRegular(file.get())) return {name, false};
    return {finalPath(file.get(), name), true};
}

std::string replaceFile(fs::path const& target, fs::path const& file)
{
    if (::MoveFileExW(file.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0)
        return {};
    return std::system_category().message(static_cast<int>(::GetLastError()));
}

} // namespace material_graph
