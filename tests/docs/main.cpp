// Runs what the pages show: main SCRIPT... checks the scripts; without arguments every whole program runs, in the
// current directory, which holds the project's sample.

#include <tw2/object/object_animation.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/script.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#define PROGRAM(name) int name();
#include "programs.h"
#undef PROGRAM

namespace
{
/// Reads every block of a script as an animated object. What its files are is not asked: the page has none.
void checkBlocks(S_Script& script, TW2::TW_ObjectAnimation& walker)
{
    for (unsigned int i = 0; i < script.getBlockCount(); ++i)
    {
        const char* name = script.getBlockName(i);
        try
        {
            bool hasGeometry = false;
            {
                const S_ScriptLockGuard inside(script);
                script.lock(i);
                hasGeometry = script.count("geometry") > 0;
            }
            if (hasGeometry)
            {
                const TW2::TW_ObjectAnimation object(&script, name, nullptr, false);
            }
            else
            {
                walker.appendAnimations(&script, name, false);
            }
        }
        catch (const S_FileException&)
        {
            std::printf("  %s: read\n", name);
        }
    }
}

/// 0 when the script is well written.
int checkScript(const char* fileName, TW2::TW_ObjectAnimation& walker)
{
    std::ifstream file(fileName);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (text.starts_with("geometry") || text.starts_with("animation"))
    {
        text = "block { " + text + "}";  // a part of an object's block
    }
    std::ofstream("shown.script") << text;
    try
    {
        S_Script script("shown.script");
        std::printf("%s\n", fileName);
        checkBlocks(script, walker);
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s: %s\n", fileName, exception.getErrorMessage());
        return 1;
    }
}

int runProgram(const char* name, int (*program)())
{
    std::printf("== %s\n", name);
    try
    {
        if (program() == 0)
        {
            return 0;
        }
        std::fprintf(stderr, "%s: failed\n", name);
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s: %s\n", name, exception.getErrorMessage());
    }
    return 1;
}
}  // namespace

int main(int argc, char** argv)
{
    int failures = 0;
    if (argc > 1)
    {
        TW2::TW_ObjectAnimation walker("walker.script", "skeleton", nullptr, false);
        for (int i = 1; i < argc; ++i)
        {
            failures += checkScript(argv[i], walker);
        }
        return failures == 0 ? 0 : 1;
    }
#define PROGRAM(name) failures += runProgram(#name, name);
#include "programs.h"
    return failures == 0 ? 0 : 1;
}
