#include "fuzz/seeds/seeds.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace
{
using Sources = std::vector<std::pair<const char*, fuzz::SeedSource::Write>>;

// Made by the first source that registers, whichever that is.
Sources& getSources()
{
    static Sources s_sources;
    return s_sources;
}
}  // namespace

fuzz::SeedSource::SeedSource(const char* target, Write write)
{
    getSources().emplace_back(target, write);
}

void fuzz::SeedFolder::add(std::string_view name, std::string_view bytes)
{
    std::filesystem::create_directories(m_path);
    std::ofstream stream(m_path / name, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush())
    {
        throw std::runtime_error("cannot write " + (m_path / name).string());
    }
}

void fuzz::SeedFolder::add(std::string_view name, const S_Bytes& bytes)
{
    add(name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    try
    {
        for (const auto& [target, write] : getSources())
        {
            fuzz::SeedFolder folder(std::filesystem::path(arguments[1]) / target);
            write(folder);
        }
    }
    catch (const std::exception& exception)
    {
        std::fprintf(stderr, "fuzz_seeds: %s\n", exception.what());
        return 1;
    }
    return 0;
}
