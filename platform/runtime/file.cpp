#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/hash_map.h>
#include <platform/runtime/operating_system.h>
#include <platform/runtime/str.h>
#include <platform/runtime/system.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

S_File File;

namespace
{
namespace fs = std::filesystem;
namespace os = S_OperatingSystem;

// Longer names exist on no file system; the bound keeps a damaged file's name from costing more than a comparison.
constexpr std::size_t longestName = 4096;

[[noreturn]] void fail(std::string_view name, const char* reason)
{
    throw S_FileException(S_String(name).c_str(), reason);
}

[[noreturn]] void failWithSystemError(std::string_view name, int error)
{
    fail(name, std::strerror(error));
}

bool isDrive(std::string_view name)
{
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return name.size() >= 2 && name[1] == ':' && isLetter(name[0]);
}

S_String withSlashes(std::string_view name)
{
    S_String result(name);
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

bool isUsable(std::string_view name)
{
    return !name.empty() && name.size() <= longestName && name.find('\0') == std::string_view::npos;
}

bool isOnDisk(const S_String& name)
{
    std::error_code error;
    return fs::exists(fs::status(os::toPath(name), error));
}

/// A name taken apart: "C:" or nothing, whether a separator follows, and the parts without "." and resolved "..".
struct Parts
{
    S_String m_strRoot;  ///< "", "/", or a drive and '/'
    S_Vector<S_String> m_vecNames;
};

Parts takeApart(const S_String& slashed)
{
    Parts parts;
    std::string_view rest = slashed;
    if (isDrive(rest))
    {
        parts.m_strRoot.assign(rest.substr(0, 2)).append("/");
        rest.remove_prefix(2);
    }
    else if (rest.starts_with('/'))
    {
        parts.m_strRoot = os::hasDrives() && rest.starts_with("//") ? "//" : "/";
    }
    while (!rest.empty())
    {
        const std::size_t end = std::min(rest.find('/'), rest.size());
        const std::string_view name = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (name.empty() || name == ".")
        {
            continue;
        }
        const bool up = name == "..";
        if (up && !parts.m_vecNames.empty() && parts.m_vecNames.back() != "..")
        {
            parts.m_vecNames.pop_back();
        }
        else if (!up || parts.m_strRoot.empty())  // above the root there is nothing
        {
            parts.m_vecNames.emplace_back(name);
        }
    }
    return parts;
}

/// An absolute name without a drive is on the current directory's, where there are drives. "//server/..." is on none.
S_String withDrive(const S_String& slashed)
{
    if (!os::hasDrives() || !slashed.starts_with('/') || slashed.starts_with("//"))
    {
        return slashed;
    }
    const S_String directory = File.getCurrentDirectory();
    return isDrive(directory) ? directory.substr(0, 2) + slashed : slashed;
}

S_String join(const S_String& directory, std::string_view name)
{
    S_String result = directory;
    if (!result.empty() && result.back() != '/')
    {
        result += '/';
    }
    result += name;
    return result;
}

/// The names in a directory, those that differ in letter case alone together.
using Listing = S_CaselessNameMap<S_Vector<S_String>>;

/// Calls `take` with every name in a directory; one that cannot be listed has none.
template <typename Take>
void list(const S_String& directory, const Take& take)
{
    std::error_code error;
    fs::directory_iterator entry(directory.empty() ? "." : os::toPath(directory), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
    {
        take(os::fromPath(entry->path().filename()));
    }
}

thread_local S_DirectoryListings* s_pOutermostListings = nullptr;
}  // namespace

struct S_DirectoryListings::Kept : S_Allocated
{
    S_NameMap<Listing> m_mapListings;  ///< by full name

    [[nodiscard]] const Listing& get(const S_String& directory)
    {
        const S_String name = File.isAbsolute(directory) ? directory : File.getCurrentDirectory() + directory;
        const auto known = m_mapListings.find(name);
        if (known != m_mapListings.end())
        {
            return known->second;
        }
        Listing listing;
        list(directory, [&](const S_String& entry) { listing[entry].push_back(entry); });
        return m_mapListings.emplace(name, std::move(listing)).first->second;
    }
};

namespace
{
/// Calls `take` with every name in `directory` that is `name` but for the case of its letters.
template <typename Take>
void listAlike(const S_String& directory, const S_String& name, const Take& take)
{
    S_DirectoryListings::Kept* const kept = S_DirectoryListings::access();
    if (!kept)
    {
        list(directory,
             [&](const S_String& entry)
             {
                 if (S_CaselessNameEqual()(entry, name))
                 {
                     take(entry);
                 }
             });
        return;
    }
    const Listing& listing = kept->get(directory);
    const auto alike = listing.find(name);
    if (alike != listing.end())
    {
        std::for_each(alike->second.begin(), alike->second.end(), take);
    }
}

/// What stands in `directory` under `name`, letter case aside: the exact name first, then by name.
S_Vector<S_String> findEntries(const S_String& directory, const S_String& name)
{
    S_Vector<S_String> found;
    const S_String exact = join(directory, name);
    if (isOnDisk(exact))
    {
        if (os::ignoresCase())
        {
            found.push_back(name == ".." ? exact : join(directory, os::getNameOnDisk(exact)));
            return found;
        }
        found.push_back(exact);
    }
    listAlike(directory, name,
              [&](const S_String& other)
              {
                  if (other != name)
                  {
                      found.push_back(join(directory, other));
                  }
              });
    if (found.size() > 1)
    {
        std::sort(found.begin() + (found.front() == exact), found.end());
    }
    return found;
}

/// The name on disk of the parts from `index` on inside `directory`; empty when there is none. The depth is that of
/// existing directories.
S_String findInside(const S_String& directory, const S_Vector<S_String>& names, std::size_t index)
{
    if (index == names.size())
    {
        return directory;
    }
    for (const S_String& entry : findEntries(directory, names[index]))
    {
        S_String found = findInside(entry, names, index + 1);
        if (!found.empty())
        {
            return found;
        }
    }
    return {};
}

struct FileCloser
{
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, FileCloser>;

/// Reads what is left of a stream whose size is not known beforehand.
void readStream(std::FILE* stream, S_Bytes& bytes)
{
    constexpr std::size_t step = 65536;
    std::size_t size = 0;
    do
    {
        bytes.resize(size + step);
        size += std::fread(bytes.data() + size, 1, step, stream);
    } while (size == bytes.size());
    bytes.resize(size);
}

/// Deletes a temporary file unless it was renamed.
class TemporaryFile
{
public:
    explicit TemporaryFile(S_String name) : m_strName(std::move(name)) {}
    ~TemporaryFile()
    {
        if (!m_strName.empty())
        {
            os::removeFile(m_strName.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const char* getName() const noexcept { return m_strName.c_str(); }
    void keep() noexcept { m_strName.clear(); }

private:
    S_String m_strName;
};

/// The file that writing `name` replaces: what stands there now, letter case aside and links followed, else the name.
S_String getTarget(std::string_view name)
{
    S_String target = File.findOnDisk(name);
    if (target.empty())
    {
        const S_String directory = File.findOnDisk(File.getPath(name));
        return directory.empty() ? withSlashes(name) : join(directory, File.getFilename(name));
    }
    std::error_code error;
    const fs::path resolved = fs::canonical(os::toPath(target), error);
    return error ? target : os::fromPath(resolved);
}

/// Writes everything and closes the file, whatever comes of it.
void writeAll(std::string_view name, OpenFile& file, const void* data, std::size_t size)
{
    const bool written = size == 0 || std::fwrite(data, 1, size, file.get()) == size;
    const int writeError = errno;
    const bool closed = std::fclose(file.release()) == 0;
    if (!written || !closed)
    {
        failWithSystemError(name, written ? errno : writeError);
    }
}
}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Names
// ---------------------------------------------------------------------------------------------------------------------

S_String S_File::getFullPathName(std::string_view name) const
{
    const S_String slashed = withSlashes(name);
    const Parts parts = takeApart(isAbsolute(slashed) ? withDrive(slashed) : getCurrentDirectory() + slashed);
    const S_Vector<S_String>& names = parts.m_vecNames;
    if (S_String found = findInside(parts.m_strRoot, names, 0); !found.empty())
    {
        return found;
    }
    S_String result = parts.m_strRoot;
    std::size_t i = 0;
    for (; i < names.size(); ++i)
    {
        const S_Vector<S_String> entries = findEntries(result, names[i]);
        if (entries.empty())
        {
            break;
        }
        result = entries.front();
    }
    for (; i < names.size(); ++i)
    {
        result = join(result, names[i]);
    }
    return result;
}

S_String S_File::getPath(std::string_view name) const
{
    const S_String slashed = withSlashes(name);
    return slashed.substr(0, slashed.rfind('/') + 1);
}

S_String S_File::getFilename(std::string_view name) const
{
    return S_String(name.substr(name.find_last_of("/\\") + 1));
}

bool S_File::isAbsolute(std::string_view name) const
{
    return name.starts_with('/') || name.starts_with('\\') || isDrive(name);
}

S_String S_File::findOnDisk(std::string_view name) const
{
    if (!isUsable(name))
    {
        return {};
    }
    S_String slashed = withSlashes(name);
    if (isOnDisk(slashed))
    {
        return slashed;
    }
    const Parts parts = takeApart(slashed);
    return findInside(parts.m_strRoot, parts.m_vecNames, 0);
}

// ---------------------------------------------------------------------------------------------------------------------
// Directories and files
// ---------------------------------------------------------------------------------------------------------------------

S_String S_File::getCurrentDirectory() const
{
    std::error_code error;
    const fs::path path = fs::current_path(error);
    if (error)
    {
        fail(".", error.message().c_str());
    }
    return join(os::fromPath(path), "");
}

void S_File::changeDirectory(std::string_view directory) const
{
    if (directory.empty())
    {
        return;
    }
    const S_String found = findOnDisk(directory);
    if (found.empty())
    {
        fail(directory, "does not exist");
    }
    if (!os::changeDirectory(found.c_str()))
    {
        failWithSystemError(directory, errno);
    }
}

bool S_File::exists(const char* name) const
{
    const S_String found = findOnDisk(name);
    std::error_code error;
    return !found.empty() && !fs::is_directory(os::toPath(found), error);
}

S_Bytes S_File::read(std::string_view name) const
{
    S_Bytes bytes;
    read(name, bytes);
    return bytes;
}

void S_File::read(std::string_view name, S_Bytes& bytes) const
{
    const S_String found = findOnDisk(name);
    if (found.empty())
    {
        fail(name, "does not exist");
    }
    std::error_code error;
    const fs::file_status status = fs::status(os::toPath(found), error);
    if (!fs::is_regular_file(status) && !fs::is_fifo(status))
    {
        fail(name, fs::is_directory(status) ? "is a directory" : "is not a file");
    }
    const OpenFile file(os::openFile(found.c_str()));
    if (!file)
    {
        failWithSystemError(name, errno);
    }
    if (fs::is_regular_file(status))
    {
        const std::uintmax_t size = fs::file_size(os::toPath(found), error);
        S_resizeUnfilled(bytes, error ? 0 : static_cast<std::size_t>(size));
        if (!bytes.empty())
        {
            bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
        }
    }
    else
    {
        readStream(file.get(), bytes);
    }
    if (std::ferror(file.get()))
    {
        failWithSystemError(name, errno);
    }
}

void S_File::write(std::string_view name, const void* data, std::size_t size) const
{
    if (!isUsable(name))
    {
        fail(name, "is not a name that a file can have");
    }
    static constinit S_Counter<unsigned int> s_uTemporaries;
    const S_String target = getTarget(name);
    std::error_code error;
    const fs::file_status old = fs::status(os::toPath(target), error);
    if (fs::is_character_file(old) || fs::is_fifo(old))
    {
        OpenFile stream(os::openStream(target.c_str()));
        if (!stream)
        {
            failWithSystemError(name, errno);
        }
        writeAll(name, stream, data, size);
        return;
    }
    TemporaryFile temporary(S_STR("%s.%ld-%u.tmp", target.c_str(), os::getProcessNumber(), ++s_uTemporaries).str());
    OpenFile file(os::createFile(temporary.getName()));
    if (!file)
    {
        const int reason = errno;
        temporary.keep();  // it is not ours
        failWithSystemError(name, reason);
    }
    writeAll(name, file, data, size);
    if (fs::is_regular_file(old))
    {
        fs::permissions(os::toPath(temporary.getName()), old.permissions(), error);
    }
    if (!os::replaceFile(temporary.getName(), target.c_str()))
    {
        failWithSystemError(name, errno);
    }
    temporary.keep();
}

// ---------------------------------------------------------------------------------------------------------------------
// S_DirectoryListings
// ---------------------------------------------------------------------------------------------------------------------

S_DirectoryListings::S_DirectoryListings() noexcept
{
    if (!s_pOutermostListings)
    {
        s_pOutermostListings = this;
    }
}

S_DirectoryListings::~S_DirectoryListings()
{
    if (s_pOutermostListings == this)
    {
        s_pOutermostListings = nullptr;
    }
}

S_DirectoryListings::Kept* S_DirectoryListings::access()
{
    if (!s_pOutermostListings)
    {
        return nullptr;
    }
    if (!s_pOutermostListings->m_pKept)
    {
        s_pOutermostListings->m_pKept = std::make_unique<Kept>();
    }
    return s_pOutermostListings->m_pKept.get();
}

// ---------------------------------------------------------------------------------------------------------------------
// S_DirectoryGuard
// ---------------------------------------------------------------------------------------------------------------------

S_DirectoryGuard::S_DirectoryGuard() : m_strDirectory(File.getCurrentDirectory()) {}

S_DirectoryGuard::~S_DirectoryGuard()
{
    // Nothing is allocated here: the guard also works while an exception for want of memory passes.
    if (!os::changeDirectory(m_strDirectory.c_str()))
    {
        Sys.verbose("Could not return to directory \"%s\": %s\n", m_strDirectory.c_str(), std::strerror(errno));
    }
}
