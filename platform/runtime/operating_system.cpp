#include <platform/runtime/operating_system.h>

#if defined(_WIN32)
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

#include <cerrno>

namespace S_OperatingSystem
{
std::filesystem::path toPath(std::string_view name)
{
    return std::filesystem::path(reinterpret_cast<const char8_t*>(name.data()),
                                 reinterpret_cast<const char8_t*>(name.data() + name.size()));
}

S_String fromPath(const std::filesystem::path& path)
{
    const std::u8string text = path.generic_u8string();
    return S_String(reinterpret_cast<const char*>(text.data()), text.size());
}

#if defined(_WIN32)

namespace
{
/// A name as the system takes it; of fixed size, so that nothing is allocated.
class WideName
{
public:
    explicit WideName(const char* name) noexcept
    {
        if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, name, -1, m_aName, longest) == 0)
        {
            m_aName[0] = L'\0';  // no name that anything has
        }
    }
    [[nodiscard]] const wchar_t* get() const noexcept { return m_aName; }

private:
    static constexpr int longest = 4200;
    wchar_t m_aName[longest];
};

/// The system's last error as errno has it.
bool fail() noexcept
{
    switch (GetLastError())
    {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
            errno = ENOENT;
            break;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            errno = EACCES;
            break;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            errno = EEXIST;
            break;
        case ERROR_DIRECTORY:
            errno = ENOTDIR;
            break;
        case ERROR_DISK_FULL:
            errno = ENOSPC;
            break;
        default:
            errno = EIO;
    }
    return false;
}

std::FILE* open(const char* name, DWORD access, DWORD disposition, int flags, const char* mode)
{
    const HANDLE handle =
        CreateFileW(WideName(name).get(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
    {
        fail();
        return nullptr;
    }
    const int file = _open_osfhandle(reinterpret_cast<std::intptr_t>(handle), flags);
    if (file < 0)
    {
        CloseHandle(handle);
        return nullptr;
    }
    std::FILE* const stream = _fdopen(file, mode);
    if (!stream)
    {
        _close(file);
    }
    return stream;
}
}  // namespace

bool ignoresCase() noexcept
{
    return true;
}

bool hasDrives() noexcept
{
    return true;
}

S_String getNameOnDisk(std::string_view name)
{
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(WideName(S_String(name).c_str()).get(), &found);
    if (search == INVALID_HANDLE_VALUE)
    {
        return S_String(name.substr(name.find_last_of("/\\") + 1));
    }
    FindClose(search);
    return fromPath(std::filesystem::path(found.cFileName));
}

std::FILE* openFile(const char* name)
{
    return open(name, GENERIC_READ, OPEN_EXISTING, _O_RDONLY | _O_BINARY, "rb");
}

std::FILE* createFile(const char* name)
{
    return open(name, GENERIC_WRITE, CREATE_NEW, _O_WRONLY | _O_BINARY, "wb");
}

std::FILE* openStream(const char* name)
{
    return open(name, GENERIC_WRITE, OPEN_EXISTING, _O_WRONLY | _O_BINARY, "wb");
}

void removeFile(const char* name) noexcept
{
    DeleteFileW(WideName(name).get());
}

bool replaceFile(const char* name, const char* target) noexcept
{
    return MoveFileExW(WideName(name).get(), WideName(target).get(), MOVEFILE_REPLACE_EXISTING) != 0 || fail();
}

bool changeDirectory(const char* name) noexcept
{
    return SetCurrentDirectoryW(WideName(name).get()) != 0 || fail();
}

long getProcessNumber() noexcept
{
    return _getpid();
}

void print(std::string_view text)
{
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (!GetConsoleMode(output, &mode))
    {
        std::fwrite(text.data(), 1, text.size(), stdout);
        return;
    }
    std::fflush(stdout);
    const std::wstring wide = toPath(text).wstring();
    DWORD written = 0;
    WriteConsoleW(output, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
}

#else

bool ignoresCase() noexcept
{
    return false;
}

bool hasDrives() noexcept
{
    return false;
}

S_String getNameOnDisk(std::string_view name)
{
    return S_String(name.substr(name.rfind('/') + 1));
}

std::FILE* openFile(const char* name)
{
    return std::fopen(name, "rb");
}

std::FILE* createFile(const char* name)
{
    return std::fopen(name, "wbx");
}

std::FILE* openStream(const char* name)
{
    return std::fopen(name, "wb");
}

void removeFile(const char* name) noexcept
{
    std::remove(name);
}

bool replaceFile(const char* name, const char* target) noexcept
{
    return std::rename(name, target) == 0;
}

bool changeDirectory(const char* name) noexcept
{
    return chdir(name) == 0;
}

long getProcessNumber() noexcept
{
    return static_cast<long>(getpid());
}

void print(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

#endif
}  // namespace S_OperatingSystem
