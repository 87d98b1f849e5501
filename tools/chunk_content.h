#pragma once

#include <platform/runtime/memory_file.h>

#include <string>
#include <variant>
#include <vector>

namespace tools
{
/// One thing worth knowing about a chunk's content.
struct Fact
{
    using Value = std::variant<long long, double, bool, std::string, std::vector<std::string>>;

    const char* name;
    Value value;
};

/// What a chunk of this id is, in words, also when it only stands inside others; "Unknown" for ids that nobody knows.
const char* getKind(unsigned int id);

/// Reads the chunk of this id at the file's position with the library's own reader and says what is in it; nothing for
/// an unknown id. Throws what the reader throws.
std::vector<Fact> readFacts(S_MemoryFile& file, unsigned int id);

/// A fact as text, such as `name "wall"` or `groups 2`.
std::string toText(const Fact& fact);
}  // namespace tools
