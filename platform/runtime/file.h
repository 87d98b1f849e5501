#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>

#include <memory>
#include <string_view>

/// Paths and whole files, reached through the global object `File`.
///
/// Names may use '/' and '\' as separators, and a name that differs from the file on disk only in letter case is found
/// too: files made on one system load on every other. Results use '/'. Every operation that fails throws
/// S_FileException with the name as given.
class TW2_PLATFORM_API S_File
{
public:
    /// @name Names
    /// @{

    /// `name` as an absolute path, relative ones taken from the current directory; "." and ".." are resolved. The file
    /// need not exist; the parts of the path that exist get the letter case they have on disk.
    [[nodiscard]] S_String getFullPathName(std::string_view name) const;
    /// The directory part of `name`, with its closing separator; empty when there is none.
    [[nodiscard]] S_String getPath(std::string_view name) const;
    /// What follows the last separator.
    [[nodiscard]] S_String getFilename(std::string_view name) const;
    /// Whether `name` is absolute ("/...", "\..." or "C:...").
    [[nodiscard]] bool isAbsolute(std::string_view name) const;
    /// The name under which the file or directory `name` stands on disk; empty when there is none.
    [[nodiscard]] S_String findOnDisk(std::string_view name) const;
    /// @}

    /// @name Directories and files
    /// @{

    /// The process's current directory, ending in '/'.
    [[nodiscard]] S_String getCurrentDirectory() const;
    /// Makes `directory` the process's current directory; an empty name changes nothing.
    void changeDirectory(std::string_view directory) const;
    /// Whether a file (not a directory) of that name exists.
    [[nodiscard]] bool exists(const char* name) const;
    /// The whole content of a file.
    [[nodiscard]] S_Bytes read(std::string_view name) const;
    /// The same into `bytes`, whose storage is used again when it is large enough. After an exception `bytes` holds
    /// nothing that can be relied on.
    void read(std::string_view name, S_Bytes& bytes) const;
    /// Writes a whole file at once: a temporary file beside it is renamed into place, so that a reader sees the old
    /// content or the new one, and a failure leaves the old one. To a device or a pipe the content goes as it is.
    void write(std::string_view name, const void* data, std::size_t size) const;
    /// @}
};

/// While one lives, the thread lists each directory at most once to find names that differ from the disk in letter
/// case: for an operation that looks for many files. Names that stand on disk exactly as they are asked for are found
/// as ever; of others that come or go meanwhile nothing may be noticed. Scopes nest; the outermost keeps the lists.
class TW2_PLATFORM_API S_DirectoryListings
{
public:
    S_DirectoryListings() noexcept;
    ~S_DirectoryListings();
    S_DirectoryListings(const S_DirectoryListings&) = delete;
    S_DirectoryListings& operator=(const S_DirectoryListings&) = delete;

    /// @name For the search
    /// @{
    struct Kept;
    /// The lists of the thread's outermost scope; null when none is open.
    [[nodiscard]] static Kept* access();
    /// @}

private:
    std::unique_ptr<Kept> m_pKept;
};

/// The one file object of the process.
extern TW2_PLATFORM_API S_File File;

/// Restores the current directory when the scope ends, also when an exception passes.
class TW2_PLATFORM_API S_DirectoryGuard
{
public:
    S_DirectoryGuard();
    ~S_DirectoryGuard();
    S_DirectoryGuard(const S_DirectoryGuard&) = delete;
    S_DirectoryGuard& operator=(const S_DirectoryGuard&) = delete;

    /// The directory that will be restored, ending in '/'.
    [[nodiscard]] const S_String& getDirectory() const noexcept { return m_strDirectory; }

private:
    S_String m_strDirectory;
};
