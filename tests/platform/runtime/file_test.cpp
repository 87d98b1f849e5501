#include "tests/support/expectations.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/verbose_capture.h"

#include <platform/runtime/file.h>

#include <gtest/gtest.h>

#include <thread>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using support::messageOf;
using support::TemporaryDirectory;

namespace
{
#ifdef _WIN32
constexpr bool isWindows = true;
#else
constexpr bool isWindows = false;
#endif

namespace fs = std::filesystem;

std::string full(std::string_view name)
{
    return std::string(File.getFullPathName(name));
}
}  // namespace

TEST(Files, NamesAreTakenApartAtEitherSeparator)
{
    EXPECT_EQ(File.getPath("models\\men/soldier.tw"), "models/men/");
    EXPECT_EQ(File.getFilename("models/men\\soldier.tw"), "soldier.tw");
    EXPECT_EQ(File.getPath("soldier.tw"), "");
    EXPECT_EQ(File.getFilename("models/"), "");
    EXPECT_EQ(File.getPath("\\soldier.tw"), "/");
    for (const char* absolute : {"/a", "\\a", "C:\\a", "c:/a"})
    {
        EXPECT_TRUE(File.isAbsolute(absolute)) << absolute;
    }
    for (const char* relative : {"", "a", "./a", "..\\a", "1:/a", "C"})
    {
        EXPECT_FALSE(File.isAbsolute(relative)) << relative;
    }
}

TEST(Files, AFullPathIsAbsoluteWithoutDotsAndHasTheLetterCaseOfTheDisk)
{
    TemporaryDirectory directory;
    directory.write("Models/Men/Soldier.tw", "x");
    directory.enter();
    const std::string root = directory.getPath().generic_string();
    EXPECT_EQ(full("models\\MEN/soldier.TW"), root + "/Models/Men/Soldier.tw");
    EXPECT_EQ(full("models/./nowhere/../new.tw"), root + "/Models/new.tw");
    EXPECT_EQ(full("Models/Men/..\\..//"), root);
    EXPECT_EQ(full(""), root);
    EXPECT_EQ(full(root + "/../../../../../../../.." + root.substr(root.find('/'))), root);
    EXPECT_EQ(full("Q:\\a\\..\\b"), "Q:/b");
    EXPECT_EQ(std::string(File.getCurrentDirectory()), root + "/");
}

TEST(Files, ManySearchesListADirectoryOnceAndFindWhatOneFinds)
{
    if (isWindows)
    {
        GTEST_SKIP() << "the disk does not tell letter cases apart";
    }
    TemporaryDirectory directory;
    directory.write("Folder/Skin.tga", "1");
    directory.write("Folder/sKIN.tga", "2");
    directory.write("FOLDER/wood.tga", "3");
    directory.enter();
    const std::string root = directory.getPath().generic_string() + "/";
    const auto find = [](std::string_view name) { return std::string(File.findOnDisk(name)); };
    const S_DirectoryListings listings;
    {
        const S_DirectoryListings inner;
        EXPECT_EQ(find("folder\\SKIN.TGA"), "Folder/Skin.tga");
        EXPECT_EQ(find("folder/sKIN.tga"), "Folder/sKIN.tga");
        EXPECT_EQ(find("folder/WOOD.tga"), "FOLDER/wood.tga");
        EXPECT_EQ(find(root + "folder/WOOD.tga"), root + "FOLDER/wood.tga");
    }
    directory.write("Folder/new.tga", "4");
    EXPECT_EQ(find("Folder/new.tga"), "Folder/new.tga");
    EXPECT_EQ(find("folder/new.tga"), "Folder/new.tga");
    EXPECT_EQ(find("folder/NEW.tga"), "") << "the list is older";
    File.changeDirectory("Folder");
    EXPECT_EQ(find("skin.TGA"), "Skin.tga") << "another directory of the same relative name";
    EXPECT_EQ(find("folder/WOOD.tga"), "");
    File.changeDirectory("..");
    fs::remove_all(root + "Folder");
    EXPECT_EQ(find("folder/WOOD.tga"), "FOLDER/wood.tga");
}

TEST(Files, ANameIsFoundInAnyLetterCaseTheExactOneFirst)
{
    if (isWindows)
    {
        GTEST_SKIP() << "the disk does not tell letter cases apart";
    }
    TemporaryDirectory directory;
    directory.write("Skin.tga", "1");
    directory.write("skin.tga", "2");
    directory.write("textures/other.tga", "3");
    directory.write("TEXTURES/Wood.TGA", "4");
    directory.write("textures/deep/x", "");
    directory.enter();
    const auto content = [](const char* name)
    {
        const S_Bytes bytes = File.read(name);
        return std::string(bytes.begin(), bytes.end());
    };
    EXPECT_EQ(content("skin.tga"), "2");
    EXPECT_EQ(content("Skin.tga"), "1");
    EXPECT_EQ(content("SKIN.TGA"), "1") << "the first by name";
    EXPECT_EQ(content("textures\\wood.tga"), "4") << "in the directory that has it, the exact name of which is another";
    EXPECT_EQ(content("nowhere/..\\Textures/OTHER.tga"), "3");
    EXPECT_TRUE(File.exists("TEXTURES\\WOOD.tga"));
    File.changeDirectory("textures");
    EXPECT_EQ(content("..\\Textures/WOOD.tga"), "4") << "from one directory up";
    File.changeDirectory("Deep");
    EXPECT_EQ(content("..\\../SKIN.tga"), "1");
    File.changeDirectory("../..");
    EXPECT_FALSE(File.exists("textures")) << "a directory is no file";
    EXPECT_FALSE(File.exists("wood.tga"));
    EXPECT_FALSE(File.exists(""));
    EXPECT_EQ(File.findOnDisk(std::string_view("skin.tga\0x", 10)), "");
    std::string endless;
    for (int i = 0; i < 1000000; ++i)
    {
        endless += "textures/../";
    }
    EXPECT_FALSE(File.exists((endless + "skin.tga").c_str()));
}

TEST(Files, ComplaintsNameTheFileAsGivenAndTheReason)
{
    TemporaryDirectory directory;
    directory.write("a/b", "x");
    directory.enter();
    EXPECT_EQ(messageOf([] { static_cast<void>(File.read("Nowhere\\x.tw")); }),
              "File \"Nowhere\\x.tw\": does not exist");
    EXPECT_EQ(messageOf([] { static_cast<void>(File.read("A")); }), "File \"A\": is a directory");
    if (!isWindows)
    {
        EXPECT_EQ(messageOf([] { static_cast<void>(File.read("/dev/zero")); }), "File \"/dev/zero\": is not a file");
        EXPECT_EQ(messageOf([] { File.write("a", "x", 1); }), "File \"a\": Is a directory");
    }
    EXPECT_THROW(File.write("a", "x", 1), S_FileException);
    EXPECT_EQ(messageOf([] { File.changeDirectory("no%s"); }), "File \"no%s\": does not exist");
    EXPECT_EQ(messageOf([] { File.changeDirectory("a/b"); }), "File \"a/b\": Not a directory");
    EXPECT_EQ(messageOf([] { File.write("", "x", 1); }), "File \"\": is not a name that a file can have");
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(directory.getPath()), {}), 2) << "no temporary is left";
}

TEST(Files, WritingReplacesTheFileThatANameMeans)
{
    if (isWindows)
    {
        GTEST_SKIP() << "links are for administrators";
    }
    TemporaryDirectory directory;
    directory.write("Out/Old.txt", "old");
    fs::permissions(directory.file("Out/Old.txt"), fs::perms(0600));
    fs::create_symlink("Out/Old.txt", directory.file("link.txt"));
    directory.enter();
    File.write("out\\old.TXT", "new", 3);
    EXPECT_EQ(directory.read("Out/Old.txt"), "new");
    EXPECT_EQ(fs::status("Out/Old.txt").permissions(), fs::perms(0600));
    File.write("link.txt", "through", 7);
    EXPECT_TRUE(fs::is_symlink("link.txt"));
    EXPECT_EQ(directory.read("Out/Old.txt"), "through");
    File.write("OUT/fresh.txt", nullptr, 0);
    EXPECT_EQ(directory.read("Out/fresh.txt"), "");
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(directory.getPath()), {}), 4);
}

#ifndef _WIN32
TEST(Files, APipeIsWrittenToAndStays)
{
    const TemporaryDirectory directory;
    const std::string pipe = directory.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    fs::create_symlink("pipe", directory.file("link"));
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    File.write(directory.file("link"), "content", 7);
    char read[8] = {};
    EXPECT_EQ(::read(reader, read, sizeof(read)), 7);
    EXPECT_STREQ(read, "content");
    close(reader);
    EXPECT_TRUE(fs::is_fifo(pipe));
    std::string much(300'001, 'm');
    much.back() = '.';
    std::thread writer([&] { File.write(pipe, much.data(), much.size()); });
    const S_Bytes all = File.read(pipe);
    writer.join();
    EXPECT_TRUE(std::string(all.begin(), all.end()) == much);
}
#endif

TEST(Files, TheGuardReturnsToTheDirectoryAlsoWhenMemoryIsShort)
{
    TemporaryDirectory directory;
    directory.write("Models/x", "");
    directory.enter();
    const S_String before = File.getCurrentDirectory();
    {
        const S_DirectoryGuard guard;
        EXPECT_EQ(guard.getDirectory(), before);
        File.changeDirectory("models");
        EXPECT_NE(File.getCurrentDirectory(), before);
        File.changeDirectory("");
        S_Memory::failAllocation(1);
    }
    S_Memory::failAllocation(0);
    EXPECT_EQ(File.getCurrentDirectory(), before);

    support::VerboseCapture log;
    {
        fs::create_directory("gone");
        fs::current_path("gone");
        const S_DirectoryGuard guard;
        fs::current_path("..");
        fs::remove("gone");
    }
    EXPECT_EQ(log.getText(),
              "Could not return to directory \"" + directory.file("gone/") + "\": No such file or directory\n");
}
