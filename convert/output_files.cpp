#include "convert/output_files.h"

#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/memory_file_writer.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace TW2::convert
{
namespace
{
void check(const std::error_code& error, const std::filesystem::path& path)
{
    if (error)
    {
        throw S_FileException(path.c_str(), error.message().c_str());
    }
}

void makeFolder(const std::filesystem::path& path)
{
    std::error_code error;
    std::filesystem::create_directories(path, error);
    check(error, path);
}

/// Removes a folder with all that is in it at the end of the scope.
class RemovalGuard
{
public:
    explicit RemovalGuard(std::filesystem::path path) : m_path(std::move(path)) {}
    RemovalGuard(const RemovalGuard&) = delete;
    RemovalGuard& operator=(const RemovalGuard&) = delete;
    ~RemovalGuard()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

private:
    std::filesystem::path m_path;
};
}  // namespace

void OutputFiles::add(const std::string& name, std::vector<unsigned char> bytes)
{
    m_vecFiles.push_back({name, std::move(bytes)});
}

void OutputFiles::add(const std::string& name, const S_MemoryFileWriter& writer)
{
    add(name, std::vector<unsigned char>(writer.getBytes().begin(), writer.getBytes().end()));
}

void OutputFiles::add(const std::string& name, const std::string& text)
{
    add(name, std::vector<unsigned char>(text.begin(), text.end()));
}

std::string OutputFiles::getUnfinishedName(const std::string& folder, int process)
{
    return (std::filesystem::path(folder) / (".tw2-convert-" + std::to_string(process))).string();
}

std::vector<std::string> OutputFiles::write(const std::string& folder) const
{
    const std::filesystem::path unfinished = getUnfinishedName(folder, getpid());
    const RemovalGuard guard(unfinished);
    std::error_code made;
    std::filesystem::create_directories(unfinished, made);
    check(made, folder);
    for (const Entry& file : m_vecFiles)
    {
        const std::filesystem::path path = unfinished / file.m_strName;
        makeFolder(path.parent_path());
        File.write(path.string(), file.m_vecBytes.data(), file.m_vecBytes.size());
    }
    std::vector<std::string> written;
    for (const Entry& file : m_vecFiles)
    {
        const std::filesystem::path path = std::filesystem::path(folder) / file.m_strName;
        makeFolder(path.parent_path());
        std::error_code error;
        std::filesystem::rename(unfinished / file.m_strName, path, error);
        check(error, path);
        written.push_back(path.string());
    }
    return written;
}

std::size_t OutputFiles::getSize(const std::string& name) const noexcept
{
    const auto found = std::find_if(m_vecFiles.begin(), m_vecFiles.end(),
                                    [&name](const Entry& entry) { return entry.m_strName == name; });
    return found == m_vecFiles.end() ? 0 : found->m_vecBytes.size();
}
}  // namespace TW2::convert
