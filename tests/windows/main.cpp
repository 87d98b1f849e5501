#include <tw2/core/exceptions.h>
#include <tw2/material/material.h>

#include <platform/image/image.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/hash_map.h>
#include <platform/runtime/memory_file.h>
#include <platform/scene/driver.h>
#include <platform/scene/material.h>
#include <platform/scene/vertex_format.h>

#include <cstddef>
#include <cstdio>
#include <cstring>

namespace
{
int failures = 0;

void expect(bool condition, const char* what, const char* found)
{
    if (!condition)
    {
        std::printf("not so: %s; found \"%s\"\n", what, found);
        ++failures;
    }
}

void checkNames()
{
    const S_String here = File.getCurrentDirectory();
    expect(here.size() > 3 && here[1] == ':' && here[2] == '/' && here.back() == '/', "a directory has a drive",
           here.c_str());

    const char* const name =
        "Gr\xc3\xbc\xc3\x9f"
        "e.txt";
    File.write(name, "a", 1);
    File.write(name, "bcd", 3);
    expect(File.read(name).size() == 3, "a file is replaced by what is written", name);
    expect(File.exists("gr\xc3\xbc\xc3\x9f"
                       "E.TXT"),
           "letter case does not count", name);
    const S_String full = File.getFullPathName(
        ".\\none\\..\\gr\xc3\xbc\xc3\x9f"
        "E.TXT");
    expect(full == here + name, "a full name has the letters that stand on disk", full.c_str());

    const S_String rooted = File.getFullPathName("\\none\\a.txt");
    expect(rooted == here.substr(0, 2) + "/none/a.txt", "a name from the root is on the current drive", rooted.c_str());
    const S_String server = File.getFullPathName("\\\\none\\share\\a.txt");
    expect(server == "//none/share/a.txt", "a server's name stays one", server.c_str());

    {
        const S_DirectoryGuard guard;
        File.changeDirectory("C:\\WINDOWS");
        expect(S_CaselessNameEqual()(File.getCurrentDirectory(), "C:/windows/"), "drives are changed",
               File.getCurrentDirectory().c_str());
    }
    expect(File.getCurrentDirectory() == here, "the guard returns", File.getCurrentDirectory().c_str());
}

/// An exception of one library passes through the other and is caught as a class of a third.
void checkExceptions()
{
    try
    {
        static_cast<void>(File.read("none.txt"));
        expect(false, "a missing file is an exception", "");
    }
    catch (const S_FileException& exception)
    {
        expect(std::strstr(exception.getErrorMessage(), "none.txt") != nullptr, "the file is named",
               exception.getErrorMessage());
    }
    try
    {
        throw TW2::TW_Exception_TextureNotFound("wood.png");
    }
    catch (const S_Exception& exception)
    {
        expect(std::strstr(exception.getErrorMessage(), "wood.png") != nullptr, "the texture is named",
               exception.getErrorMessage());
    }
}

template <typename T>
void expectConstant(const T& constant, T value, const char* name)
{
    expect(constant == value, "a constant has its value", name);
}

/// A reference to a constant of a class needs its address, which a DLL has to have.
void checkConstants()
{
    expectConstant(G_Image::bytesPerPixel, 4U, "G_Image::bytesPerPixel");
    expectConstant(G_Image::maximumPixels, std::size_t{8192} * 8192, "G_Image::maximumPixels");
    expectConstant(P_Driver::renderStateCount, 256U, "P_Driver::renderStateCount");
    expectConstant(P_Material::defaultSortPriority, 3U, "P_Material::defaultSortPriority");
    expectConstant(P_Material::maximumTextureLayers, 16U, "P_Material::maximumTextureLayers");
    expectConstant(P_VertexFormat::boneCountShift, 8U, "P_VertexFormat::boneCountShift");
    expectConstant(P_VertexFormat::maximumBonesPerVertex, 4U, "P_VertexFormat::maximumBonesPerVertex");
    expectConstant(P_VertexFormat::maximumTextureLayers, 4U, "P_VertexFormat::maximumTextureLayers");
    expectConstant(S_MemoryFile::headerSize, std::size_t{12}, "S_MemoryFile::headerSize");
    expectConstant(TW2::TW_Material::textureTypeCount, 4, "TW_Material::textureTypeCount");
}
}  // namespace

int main()
{
    checkNames();
    checkExceptions();
    checkConstants();
    return failures;
}
