#include "json/writer.h"
#include "tools/chunk_tree.h"
#include "tools/commands.h"

#include <tw2/io/loader.h>

#include <platform/runtime/exception.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace
{
struct Options
{
    std::vector<std::string> files;
    bool tree = false;
    bool json = false;
};

void printDamage(const std::string& error, int depth)
{
    if (!error.empty())
    {
        std::printf("%*sdamaged: %s\n", 2 * depth, "", error.c_str());
    }
}

void printChunk(const tools::TreeChunk& chunk, int depth)
{
    std::printf("%*s0x%X %s, version %u, %u bytes at %zu", 2 * depth, "", chunk.id, tools::getKind(chunk.id),
                chunk.version, chunk.size, chunk.offset);
    const char* separator = ": ";
    for (const tools::Fact& fact : chunk.facts)
    {
        std::printf("%s%s", separator, tools::toText(fact).c_str());
        separator = ", ";
    }
    std::printf("\n");
    for (const tools::TreeChunk& nested : chunk.chunks)
    {
        printChunk(nested, depth + 1);
    }
    printDamage(chunk.error, depth + 1);
}

void writeFact(TW2::json::Writer& json, const tools::Fact& fact)
{
    const auto write = [&](const auto& value)
    {
        if constexpr (std::is_same_v<decltype(value), const std::vector<std::string>&>)
        {
            json.list(fact.name, value);
        }
        else
        {
            json.member(fact.name, value);
        }
    };
    std::visit(write, fact.value);
}

void writeChunk(TW2::json::Writer& json, const tools::TreeChunk& chunk)
{
    json.member("id", chunk.id);
    json.member("kind", tools::getKind(chunk.id));
    json.member("version", chunk.version);
    json.member("size", chunk.size);
    json.member("offset", chunk.offset);
    if (!chunk.facts.empty())
    {
        json.key("content");
        json.beginObject();
        for (const tools::Fact& fact : chunk.facts)
        {
            writeFact(json, fact);
        }
        json.endObject();
    }
    if (!chunk.chunks.empty())
    {
        json.objects("chunks", chunk.chunks, [&json](const tools::TreeChunk& nested) { writeChunk(json, nested); });
    }
    if (!chunk.error.empty())
    {
        json.member("error", chunk.error);
    }
}

/// The tree of a file; one that cannot be opened is an empty tree with the reason.
tools::ChunkTree readTree(const std::string& file, bool withContents)
{
    try
    {
        return tools::readChunkTree(file, withContents);
    }
    catch (const S_FileException& exception)
    {
        return {file, 0, {}, exception.getErrorMessage(), exception.getErrorMessage()};
    }
}

void writeTree(TW2::json::Writer& json, const tools::ChunkTree& tree)
{
    json.beginObject();
    json.member("file", tree.file);
    json.member("size", tree.size);
    json.objects("chunks", tree.chunks, [&json](const tools::TreeChunk& chunk) { writeChunk(json, chunk); });
    if (!tree.error.empty())
    {
        json.member("error", tree.error);
    }
    json.endObject();
}

std::string printTree(const std::string& file)
{
    const tools::ChunkTree tree = readTree(file, true);
    for (const tools::TreeChunk& chunk : tree.chunks)
    {
        printChunk(chunk, 0);
    }
    printDamage(tree.error, 0);
    return tree.firstError;
}

std::string printReport(const std::string& file)
{
    try
    {
        TW2::TW_Loader::analyze(file);
    }
    catch (const S_Exception& exception)
    {
        return exception.getErrorMessage();
    }
    return {};
}

/// Each of these shows all files and returns the first error; empty when there was none.
/// @{
std::string writeJson(const Options& options)
{
    std::string error;
    TW2::json::Writer json(std::cout);
    json.beginArray();
    for (const std::string& file : options.files)
    {
        const tools::ChunkTree tree = readTree(file, options.tree);
        writeTree(json, tree);
        error = error.empty() ? tree.firstError : error;
    }
    json.endArray();
    return error;
}

std::string print(const Options& options)
{
    std::string error;
    for (const std::string& file : options.files)
    {
        if (options.files.size() > 1)
        {
            std::printf("%s:\n", file.c_str());
        }
        const std::string own = options.tree ? printTree(file) : printReport(file);
        error = error.empty() ? own : error;
    }
    return error;
}
/// @}

void analyze(const Options& options)
{
    const std::string error = options.json ? writeJson(options) : print(options);
    if (!error.empty())
    {
        throw tools::Failure(error);
    }
}

const tools::Command s_command("analyze", "List the chunks of animation, keyframe and skin data files",
                               [](CLI::App& command)
                               {
                                   const auto options = std::make_shared<Options>();
                                   command.add_option("FILE", options->files, "Files to look into")->required();
                                   command.add_flag("--tree", options->tree, "Show nested chunks and what is in each");
                                   command.add_flag("--json", options->json,
                                                    "Print JSON: an array with an object for each file");
                                   command.callback([options] { analyze(*options); });
                               });
}  // namespace
