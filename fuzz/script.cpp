#include "fuzz/records.h"

#include <platform/math/vector3.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/script.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

namespace
{
using fuzz::require;

void parseBlock(const S_Script& script, const char* name, unsigned int occurrence, bool strict)
{
    S_String text;
    int integer = 0;
    float number = 0.0F;
    M_Vector3Template<float> vector;
    const S_Script::Variables table[] = {{"s", S_Script::t_string, &text, ""},
                                         {"i", S_Script::t_int, &integer, "0"},
                                         {"f", S_Script::t_float, &number, "0.0"},
                                         {"v", S_Script::t_float3, &vector, "(-1,-1,-1)"},
                                         {nullptr, S_Script::t_int, nullptr, nullptr}};
    try
    {
        script.parse(table, name, occurrence, strict);
    }
    catch (const S_ScriptException& exception)
    {
        require(std::strstr(exception.getErrorMessage(), ", line ") != nullptr);
        require(text.empty() && integer == 0 && number == 0.0F);
    }
    require(std::isfinite(number) && std::isfinite(vector.x) && std::isfinite(vector.y) && std::isfinite(vector.z));
}

/// Reads every block inside the current one in both ways; blocks nest at most 64 deep.
void walk(S_Script& script)
{
    const S_Script::Blocks table[] = {{"a", 0, 1}, {"b", 1, -1}, {nullptr, 0, 0}};
    try
    {
        script.blockCheck(table, true);
    }
    catch (const S_ScriptException&)
    {
    }
    const unsigned int depth = script.getDepth();
    for (unsigned int i = 0; i < script.getBlockCount(); ++i)
    {
        const char* name = script.getBlockName(i);
        const unsigned int count = script.count(name);
        require(count > 0);
        parseBlock(script, name, count - 1, true);
        parseBlock(script, name, count - 1, false);
        const S_ScriptLockGuard guard(script);
        script.lock(i);
        require(std::strlen(script.staticNesting()) > 0);
        walk(script);
    }
    require(script.getDepth() == depth);
}
}  // namespace

// Any text as a script: it is refused with a line, or every block of it can be walked and read.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    try
    {
        S_Script script = S_Script::fromText("input", text.c_str());
        walk(script);
    }
    catch (const S_ScriptException& exception)
    {
        require(std::strstr(exception.getErrorMessage(), ", line ") != nullptr);
    }
    return 0;
}
