#pragma once

#include <cstddef>
#include <string>
#include <vector>

class S_MemoryFileWriter;

namespace TW2::convert
{
/// What a conversion will write, held in memory until all of it is complete.
class OutputFiles
{
public:
    /// `name` is relative to the output folder.
    void add(const std::string& name, const void* data, std::size_t size);
    void add(const std::string& name, const S_MemoryFileWriter& writer);
    void add(const std::string& name, const std::string& text);
    [[nodiscard]] std::size_t getCount() const noexcept { return m_vecFiles.size(); }

    /// Writes every file into `folder`, which is made when it is missing; returns the names written. Each file appears
    /// as a whole. Throws S_FileException.
    std::vector<std::string> write(const std::string& folder) const;
    /// Bytes of one file; 0 when there is none of that name.
    [[nodiscard]] std::size_t getSize(const std::string& name) const noexcept;

private:
    struct Entry
    {
        std::string m_strName;
        std::vector<unsigned char> m_vecBytes;
    };
    std::vector<Entry> m_vecFiles;
};
}  // namespace TW2::convert
