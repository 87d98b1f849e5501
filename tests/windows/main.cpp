#include <tw2/core/exceptions.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/hash_map.h>

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
}  // namespace

int main()
{
    checkNames();
    checkExceptions();
    return failures;
}
