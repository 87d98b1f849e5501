#include <tw2/io/loader.h>
#include <tw2/material/texture.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/math/math_init.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/solace_init.h>
#include <platform/scene/virtual_object.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{
void expect(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "not so: %s\n", what);
        std::_Exit(1);
    }
}

/// Comes into being before the library's static data, which stand behind this file for the linker, and goes after them.
struct Frame
{
    Frame() { expect(S_SolaceInit::getUserCount() == 0, "the host's own static data come first"); }
    ~Frame()
    {
        expect(S_SolaceInit::getUserCount() == 0 && M_MathInit::getUserCount() == 0, "the layers have stopped");
        expect(S_Memory::getLiveCount() == 0, "all memory was released, that of the file still open too");
        std::puts("all gone");
    }
} s_frame;
}  // namespace

// Plays a character of the script given, with static libraries, and ends with a file still in the loader's memory.
int main(int, char** arguments)
{
    expect(S_SolaceInit::getUserCount() > 0 && M_MathInit::getUserCount() > 0, "the layers run before main");
    try
    {
        {
            TW2::TW_VertexAnimation character(arguments[1], "skeleton", "skin");
            TW2::TW_VertexAnimation other(character);
            const unsigned int last = character.getTotalMeshes() - 1;
            character.animateObject(1, 0.3F, nullptr);
            other.animateObject(1, 0.9F, nullptr);
            const auto place = character.getMesh(last)->getObjectToWorldMatrix().getTranslation();
            const auto otherPlace = other.getMesh(last)->getObjectToWorldMatrix().getTranslation();
            std::printf("%u bones, the last at %.3f %.3f %.3f\n", last + 1, static_cast<double>(place.x),
                        static_cast<double>(place.y), static_cast<double>(place.z));
            expect((place - otherPlace).length() > 0.001F, "the character moves");
        }
        TW2::TW_Texture::addTexturePath(".");
        TW2::TW_Loader::cacheFileForLoading(arguments[2]);
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
