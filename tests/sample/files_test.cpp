// The files of sample/ are those that the examples write: who changes one changes the other.

#ifdef TW2_WRITE_WALKER
#include "tests/support/run_command.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace fs = std::filesystem;

namespace
{
std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Whether a float that holds byte `at` is nearly the same in both: sines of another machine may end otherwise. Where
/// it ends comes back in `end`.
bool isNearlyTheSame(const std::string& a, const std::string& b, std::size_t at, std::size_t& end)
{
    for (std::size_t begin = at > 3 ? at - 3 : 0; begin <= at && begin + 4 <= a.size(); ++begin)
    {
        float x = 0.0f;
        float y = 0.0f;
        std::memcpy(&x, a.data() + begin, 4);
        std::memcpy(&y, b.data() + begin, 4);
        if (std::abs(x - y) <= 2e-6f)
        {
            end = begin + 4;
            return true;
        }
    }
    return false;
}

/// The first byte that differs by more than the last places of a float; -1 when there is none.
long long findDifference(const std::string& a, const std::string& b)
{
    for (std::size_t at = 0; at < a.size();)
    {
        std::size_t end = at + 1;
        if (a[at] != b[at] && !isNearlyTheSame(a, b, at, end))
        {
            return static_cast<long long>(at);
        }
        at = end;
    }
    return -1;
}
}  // namespace

TEST(SampleFiles, AreWhatTheExamplesWrite)
{
    const support::TemporaryDirectory folder;
    for (const char* program : {TW2_WRITE_SPROUT, TW2_WRITE_WALKER})
    {
        const support::CommandResult result = support::runProgram(program, {folder.getPath().string()});
        ASSERT_EQ(result.status, 0) << result.errors;
    }
    std::size_t written = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.getPath()))
    {
        if (entry.is_regular_file())
        {
            const fs::path name = fs::relative(entry.path(), folder.getPath());
            const std::string here = readFile(entry.path());
            const std::string there = readFile(TW2_SAMPLE / name);
            ASSERT_EQ(here.size(), there.size()) << name;
            EXPECT_EQ(findDifference(here, there), -1) << name;
            ++written;
        }
    }
    std::size_t kept = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(TW2_SAMPLE))
    {
        kept += entry.is_regular_file() ? 1 : 0;
    }
    EXPECT_EQ(written, kept) << "a file of the sample that nobody writes";
}
#endif
