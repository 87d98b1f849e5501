#include "convert/output_files.h"

#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/memory_file_writer.h>

#include <algorithm>
#include <filesystem>

namespace TW2::convert
{
void OutputFiles::add(const std::string& name, const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    m_vecFiles.push_back({name, {bytes, bytes + size}});
}

void OutputFiles::add(const std::string& name, const S_MemoryFileWriter& writer)
{
    add(name, writer.getBytes().data(), writer.getBytes().size());
}

void OutputFiles::add(const std::string& name, const std::string& text)
{
    add(name, text.data(), text.size());
}

std::vector<std::string> OutputFiles::write(const std::string& folder) const
{
    std::vector<std::string> written;
    for (const Entry& file : m_vecFiles)
    {
        const std::filesystem::path path = std::filesystem::path(folder) / file.m_strName;
        std::error_code error;
        std::filesystem::create_directories(path.parent_path(), error);
        if (error)
        {
            throw S_FileException(path.parent_path().c_str(), error.message().c_str());
        }
        File.write(path.string(), file.m_vecBytes.data(), file.m_vecBytes.size());
        written.push_back(path.string());
    }
    return written;
}

std::size_t OutputFiles::getSize(const std::string& name) const noexcept
{
    const auto found = std::ranges::find(m_vecFiles, name, &Entry::m_strName);
    return found == m_vecFiles.end() ? 0 : found->m_vecBytes.size();
}
}  // namespace TW2::convert
