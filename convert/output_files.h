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
    void add(const std::string& name, std::vector<unsigned char> bytes);
    void add(const std::string& name, const S_MemoryFileWriter& writer);
    void add(const std::string& name, const std::string& text);
    [[nodiscard]] std::size_t getCount() const noexcept { return m_vecFiles.size(); }

    /// Writes every file into `folder`, which is made when it is missing; returns the names written. All are written
    /// into a folder beside them first and then moved to their places, so that a failure leaves what was there. Throws
    /// S_FileException.
    std::vector<std::string> write(const std::string& folder) const;
    /// The folder into which the process of that number writes first: it is there only as long as that takes, or when
    /// the process did not come to the end of it.
    [[nodiscard]] static std::string getUnfinishedName(const std::string& folder, int process);
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
