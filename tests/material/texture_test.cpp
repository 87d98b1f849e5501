#include "tests/support/expectations.h"
#include "tests/support/material_records.h"
#include "tests/support/verbose_capture.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/texture.h>

#include <platform/image/image_exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/rollback.h>
#include <platform/scene/map.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using namespace TW2;

namespace
{
using testing::ElementsAre;
using testing::HasSubstr;

TW_Texture::CreateInfo makeInfo(const char* file, const char* alphaFile = "", int mipLevels = 0)
{
    TW_Texture::CreateInfo info;
    info.name = "a texture";
    info.filename = file;
    info.alphaFilename = alphaFile;
    info.mipLevels = mipLevels;
    return info;
}

std::vector<std::string> getPathList()
{
    std::vector<std::string> list;
    for (int i = 0; i < TW_Texture::getTexturePathCount(); ++i)
    {
        list.emplace_back(TW_Texture::getTexturePath(i));
    }
    return list;
}

/// Notes what it is shown; throws when told to.
class Spy : public TW_TextureCallback
{
public:
    void operator()(P_Map* map, const TW_Texture::CreateInfo& info) override
    {
        m_bWasValid = map->isValid();
        m_vecInfos.push_back(info);
        if (m_bThrows)
        {
            throw std::runtime_error("host");
        }
    }

    std::vector<TW_Texture::CreateInfo> m_vecInfos;
    bool m_bWasValid = false;
    bool m_bThrows = false;
};
}  // namespace

TEST(TexturePath, DirectoriesAreTrimmedAndClosedAndKeepTheirOrder)
{
    const support::TextureFolder folder;
    const std::pair<const char*, std::vector<std::string>> table[] = {
        {"", {}},
        {" ; \t;;", {}},
        {"  one dir  ; \t ;two/", {"one dir\\", "two/"}},
        {"a\\;a;b", {"a\\", "a\\", "b\\"}},
    };
    for (const auto& [text, expected] : table)
    {
        TW_Texture::clearTexturePathList();
        TW_Texture::addTexturePath(text);
        EXPECT_EQ(getPathList(), expected) << '"' << text << '"';
    }
    TW_Texture::addTexturePath("c");
    EXPECT_THAT(getPathList(), ElementsAre("a\\", "a\\", "b\\", "c\\"));
}

TEST(TexturePath, AnEntryCanBeAddedOnceMoreAndWantOfMemoryAddsNothing)
{
    const support::TextureFolder folder;
    const std::string entry = "a directory whose name is not kept in place/";
    TW_Texture::clearTexturePathList();
    TW_Texture::addTexturePath(entry.c_str());
    for (int i = 0; i < 3; ++i)
    {
        TW_Texture::addTexturePath(TW_Texture::getTexturePath(0));
    }
    const std::vector<std::string> list(4, entry);
    EXPECT_EQ(getPathList(), list);

    const S_String more = (entry + ';' + entry + ';' + entry).c_str();
    TW_Texture::clearTexturePathList();
    support::expectNothingLeftByFailedAllocations(
        [&]
        {
            TW_Texture::addTexturePath(more);
            EXPECT_EQ(TW_Texture::getTexturePathCount(), 3);
            TW_Texture::clearTexturePathList();
        });
}

TEST(Texture, AFileIsFoundByEitherSeparatorAndEitherLetterCaseAndThroughAbsoluteDirectories)
{
    support::TemporaryDirectory directory;
    support::writePicture(directory, "Data/Textures/Stone.png", {1, 2, 3, 255});
    const std::string absolute = directory.file("Data/Textures");
    directory.enter();
    const support::TextureFolder folder;
    for (const std::string& entry :
         {std::string("Data/Textures"), std::string("Data\\Textures"), std::string("data/TEXTURES/"),
          std::string(".\\DATA\\textures\\"), absolute, absolute + '/', std::string("missing; Data/Textures ")})
    {
        TW_Texture::clearTexturePathList();
        TW_Texture::addTexturePath(entry.c_str());
        for (const char* name : {"Stone.png", "STONE.PNG"})
        {
            const TW_Texture texture(makeInfo(name));
            EXPECT_EQ(texture.getMap()->getImage().getPixel(0, 0)[2], 3) << entry << ' ' << name;
            EXPECT_EQ(texture.getFilename(), name);
            const std::string path(texture.getPath());
            EXPECT_TRUE(File.isAbsolute(path)) << path;
            EXPECT_EQ(path.find("//"), std::string::npos) << path;
        }
    }
    TW_Texture::clearTexturePathList();
    EXPECT_THAT(support::messageOf([] { TW_Texture{makeInfo("Stone.png")}; }), "TW2: Texture \"Stone.png\" not found");
}

TEST(Texture, TheFirstDirectoryThatHoldsTheFileIsTheOneItIsLoadedFrom)
{
    support::TemporaryDirectory directory;
    support::writePicture(directory, "b/stone.png", {20, 0, 0, 255});
    support::writePicture(directory, "c/stone.png", {30, 0, 0, 255});
    support::writePicture(directory, "c/alpha.png", {77, 77, 77, 255});
    directory.enter();
    const support::TextureFolder folder;
    TW_Texture::clearTexturePathList();
    TW_Texture::addTexturePath("a;b;c");
    Spy spy;
    TW_Texture::setCallback(&spy);
    const TW_Texture texture(makeInfo("stone.png", "alpha.png", 3));
    const unsigned char* pixel = texture.getMap()->getImage().getPixel(1, 1);
    EXPECT_EQ(pixel[0], 20);
    EXPECT_EQ(pixel[3], 77);
    const std::string here = directory.getPath().generic_string();
    EXPECT_EQ(std::string(texture.getPath()), here + "/b\\");
    EXPECT_EQ(std::string(texture.getAlphaPath()), here + "/c\\");
    EXPECT_EQ(std::string(texture.getMap()->getDescription()), "TW: " + here + "/b\\stone.png");
    EXPECT_EQ(texture.getMap()->getMipLevelCount(), 3);
    ASSERT_EQ(spy.m_vecInfos.size(), 1u);
    EXPECT_FALSE(spy.m_bWasValid);
    EXPECT_EQ(spy.m_vecInfos[0].name, "a texture");
    EXPECT_EQ(spy.m_vecInfos[0].path, texture.getPath());
    EXPECT_EQ(spy.m_vecInfos[0].alphaPath, texture.getAlphaPath());
}

TEST(Texture, TexturesOfTheSameFilesShareOneMapUntilTheLastIsGone)
{
    support::TextureFolder folder;
    folder.add({"a.png", "b.png"});
    Spy spy;
    TW_Texture::setCallback(&spy);
    auto first = std::make_unique<TW_Texture>(makeInfo("a.png"));
    const unsigned long long id = first->getMap()->getId();
    TW_Texture::clearTexturePathList();  // a map in use is found without a search
    TW_Texture second(makeInfo("a.png", "", 5));
    EXPECT_EQ(second.getMap(), first->getMap());
    EXPECT_EQ(second.getMap()->getMipLevelCount(), 0);
    EXPECT_EQ(spy.m_vecInfos.size(), 1u);

    TW_Texture::addTexturePath(folder.getDirectory().getPath().string().c_str());
    const TW_Texture withAlpha(makeInfo("a.png", "b.png"));
    EXPECT_NE(withAlpha.getMap()->getId(), id);
    TW_Texture otherCase(makeInfo("A.png"));  // names are compared byte by byte
    EXPECT_NE(otherCase.getMap()->getId(), id);
    otherCase = second;
    EXPECT_EQ(otherCase.getMap()->getId(), id);

    first.reset();
    second.destruct();
    EXPECT_FALSE(second.isConstructed());
    otherCase.addToTextureMemory();
    EXPECT_TRUE(otherCase.getMap()->isInTextureMemory());
    const TW_Texture copy(otherCase);
    otherCase.destruct();
    EXPECT_EQ(copy.getMap()->getId(), id);
    EXPECT_EQ(copy.getName(), "a texture");
    second.construct(makeInfo("a.png"));
    EXPECT_EQ(second.getMap()->getId(), id);
}

TEST(Texture, AFailureLeavesTheTextureUnconstructedAndNoMapBehind)
{
    support::TextureFolder folder;
    folder.add({"a.png"});
    folder.getDirectory().write("broken.png", "no picture");
    Spy spy;
    const long long live = S_Memory::getLiveCount();
    TW_Texture texture;
    const auto construct = [&](const TW_Texture::CreateInfo& info) { texture.construct(info); };
    EXPECT_THAT(support::messageOf([&] { construct(makeInfo("a.png", "none.png")); }), HasSubstr("\"none.png\""));
    EXPECT_THAT(support::messageOf([&] { construct(makeInfo("broken.png")); }), HasSubstr("broken.png"));
    EXPECT_THAT(support::messageOf([&] { construct(makeInfo("a.png", "broken.png")); }), HasSubstr("broken.png"));
    TW_Texture::setCallback(&spy);
    spy.m_bThrows = true;
    EXPECT_THROW(construct(makeInfo("a.png")), std::runtime_error);
    spy.m_vecInfos = {};
    EXPECT_FALSE(texture.isConstructed());
    EXPECT_EQ(S_Memory::getLiveCount(), live);
    spy.m_bThrows = false;
    construct(makeInfo("a.png"));
    EXPECT_EQ(spy.m_vecInfos.size(), 1u);  // the failed ones entered no map
    EXPECT_TRUE(texture.isConstructed());
}

TEST(Texture, EveryFailedAllocationOfAConstructionIsSurvived)
{
    support::TextureFolder folder;
    folder.add({"a.png", "b.png"});
    support::expectNothingLeftByFailedAllocations(
        []
        {
            TW_Texture texture(makeInfo("a.png", "b.png"));
            const TW_Texture copy(texture);
            texture.construct(makeInfo("b.png"));
        });
    support::expectNothingLeftByFailedAllocations(
        []
        {
            const TW_Texture::CreateInfo info = makeInfo("a.png");
            TW_Texture texture;
            try
            {
                texture.construct(info);
            }
            catch (const S_MemoryException_Allocation&)
            {
                EXPECT_FALSE(texture.isConstructed());
                texture.construct(info);
                EXPECT_TRUE(texture.getMap()->isValid());
                throw;
            }
        });
}

TEST(Texture, AFileThatIsMissingIsToldWithTheSearchPath)
{
    const support::TextureFolder folder;
    TW_Texture::clearTexturePathList();
    TW_Texture::addTexturePath("maps;more maps/");
    const std::string message = "TW2: Texture \"no.png\" not found";
    const std::string from = " from \"" + std::string(File.getCurrentDirectory()) + "\")";
    const auto complain = []
    { return support::complaintOf<TW_Exception_TextureNotFound>([] { TW_Texture{makeInfo("no.png")}; }); };
    EXPECT_EQ(complain(), message + " (looked for in \"maps\\\", \"more maps/\"" + from);
    TW_Texture::clearTexturePathList();
    EXPECT_EQ(complain(), message + " (looked for in no directory" + from);
}

TEST(Texture, AFileMayBeMissingWhereTheHostSaysSo)
{
    support::TextureFolder folder;
    folder.add({"wood.png"});
    ASSERT_FALSE(TW_Texture::areMissingFilesAllowed());
    TW_Texture::setMissingFilesAllowed(true);
    const S_Rollback forbid([]() noexcept { TW_Texture::setMissingFilesAllowed(false); });
    Spy spy;
    TW_Texture::setCallback(&spy);
    support::VerboseCapture log;

    const TW_Texture plain(makeInfo("no.png"));
    EXPECT_THAT(log.take(), testing::AllOf(testing::StartsWith("TW2: Texture \"no.png\" not found (looked for in "),
                                           testing::EndsWith(")\n")));
    EXPECT_TRUE(plain.getMap()->isValid());
    EXPECT_EQ(plain.getPath(), "");
    EXPECT_EQ(plain.getFilename(), "no.png");
    const G_Image& white = plain.getMap()->getImage();
    for (std::size_t byte = 0; byte < white.getSize(); ++byte)
    {
        ASSERT_EQ(white.getPixels()[byte], 255) << "byte " << byte;
    }
    const TW_Texture second(makeInfo("no.png"));
    EXPECT_EQ(second.getMap(), plain.getMap());
    EXPECT_EQ(log.take(), "") << "a file is told once while it is in use";

    const TW_Texture withoutAlpha(makeInfo("wood.png", "no.png"));
    EXPECT_THAT(log.take(), HasSubstr("\"no.png\" not found"));
    EXPECT_NE(withoutAlpha.getPath(), "");
    EXPECT_EQ(withoutAlpha.getAlphaPath(), "");
    EXPECT_EQ(spy.m_vecInfos.size(), 2u);

    TW_Texture::setMissingFilesAllowed(false);
    EXPECT_THROW(TW_Texture{makeInfo("other.png")}, TW_Exception_TextureNotFound);
}

TEST(Texture, MissingFilesLeaveNothingBehind)
{
    const support::TextureFolder folder;
    TW_Texture::setMissingFilesAllowed(true);
    const S_Rollback forbid([]() noexcept { TW_Texture::setMissingFilesAllowed(false); });
    const support::VerboseCapture log;
    support::expectNothingLeftByFailedAllocations([] { TW_Texture{makeInfo("no.png", "neither.png")}; });
}
