#include "tests/support/chunk_files.h"
#include "tests/support/expectations.h"
#include "tests/support/material_records.h"

#include <tw2/io/chunk_id.h>
#include <tw2/material/material_list_chunk.h>

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace TW2;

namespace
{
using Writer = S_MemoryFileWriter;

using support::readWritten;
using support::toBytes;

/// A material chunk as an exporter of `version` writes it, value by value; `writeSlots` writes what stands from the
/// first slot's flag on.
void writeMaterial(Writer& writer, unsigned int version, const std::function<void(Writer&)>& writeSlots)
{
    const Writer::Chunk chunk(writer, CHUNK_MATERIAL, version);
    writer << "stone" << true << false << true << false << true;
    writer << 2 << 1 << 2;
    for (int i = 0; i < 12; ++i)
    {
        writer << static_cast<float>(10 + i);
    }
    writer << 0.5f << 17.0f << 1 << 2 << 123.0f;
    writeSlots(writer);
}

void writeTexture(Writer& writer, std::initializer_list<const char*> files, const std::function<void(Writer&)>& rest)
{
    const Writer::Chunk chunk(writer, CHUNK_MATERIAL_TEXTURE, 0);
    writer << "wave" << 3 << 4 << static_cast<int>(files.size());
    for (const char* file : files)
    {
        writer << file;
    }
    rest(writer);
}

/// A record in which every field differs from its default and from its neighbours.
TWMaterialChunk makeFullRecord()
{
    TWMaterialChunk material;
    material.name = "full";
    material.twoSided = material.reservedFlag = material.vertexAlpha = material.alphaTest = true;
    material.alphaReference = 77;
    material.ambientColor = {1, 2, 3, 4};
    material.diffuseColor = {5, 6, 7, 8};
    material.specularColor = {9, 10, 11, 12};
    material.shading = 2;
    material.specular = 1;
    material.reflectionMapping = 2;
    material.glossChannel = 1;
    material.diffuseBlend = 1;
    material.reflectionBlend = 2;
    material.vertexAlphaValue = 0.25f;
    material.specularExponent = 33;
    support::fillTexture(material.accessDiffuseTexture(), "d", {"d0.png", "d1.png"}).framesPerSecond = 12;
    material.accessDiffuseTexture().playback = 1;
    material.accessDiffuseTexture().randomStart = true;
    material.accessDiffuseTexture().startFrame = 5;
    support::fillTexture(material.accessReflectionTexture(), "r", {"r.png"}).filter = 3;
    support::fillTexture(material.accessSpecularTexture(), "s", {"s.png"}).mipLevels = 1;
    support::fillTexture(material.accessOpacityTexture(), "o", {"o.png"});
    support::fillTexture(material.accessGlossTexture(), "g", {"g.png"});
    return material;
}

}  // namespace

TEST(MaterialChunk, FieldsThatAnOlderFileDoesNotCarryKeepTheirDefaults)
{
    for (unsigned int version = 0; version <= 3; ++version)
    {
        Writer writer;
        writeMaterial(writer, version,
                      [version](Writer& body)
                      {
                          body << false << false << false << false;
                          if (version >= 1)
                          {
                              body << false << 1 << true;
                          }
                          if (version >= 2)
                          {
                              body << true << true << 99;
                          }
                      });
        TWMaterialChunk material;
        readWritten(writer, material);
        EXPECT_EQ(material.name, "stone");
        EXPECT_TRUE(material.twoSided && !material.fog && material.reservedFlag && !material.invisibleGeometry &&
                    material.vertexAlpha);
        EXPECT_EQ(material.shading, 2);
        EXPECT_EQ(material.specular, 1);
        EXPECT_EQ(material.reflectionMapping, 2);
        EXPECT_EQ(material.ambientColor, G_FColor(10, 11, 12, 13));
        EXPECT_EQ(material.diffuseColor, G_FColor(14, 15, 16, 17));
        EXPECT_EQ(material.specularColor, G_FColor(18, 19, 20, 21));
        EXPECT_EQ(material.vertexAlphaValue, 0.5f);
        EXPECT_EQ(material.specularExponent, 17.0f);
        EXPECT_EQ(material.diffuseBlend, 1);
        EXPECT_EQ(material.reflectionBlend, 2);
        EXPECT_FALSE(material.hasDiffuseTexture() || material.hasGlossTexture());
        EXPECT_EQ(material.glossChannel, version >= 1 ? 1 : 0) << version;
        EXPECT_EQ(material.shadeReflection, version >= 1) << version;
        EXPECT_EQ(material.alphaTest && material.alphaBlend, version >= 2) << version;
        EXPECT_EQ(material.alphaReference, version >= 2 ? 99 : 240) << version;
    }
}

TEST(MaterialChunk, OnlyATextureOfSeveralFramesCarriesHowItIsPlayed)
{
    MaterialTextureChunk texture;
    const auto read = [&texture](std::initializer_list<const char*> files, const std::function<void(Writer&)>& rest)
    {
        Writer writer;
        writeTexture(writer, files, rest);
        readWritten(writer, texture);
    };
    const auto nothing = [](Writer&) {};
    read({"a.png"}, nothing);
    EXPECT_EQ(texture.name, "wave");
    EXPECT_EQ(texture.mipLevels, 3);
    EXPECT_EQ(texture.filter, 4);
    EXPECT_EQ(texture.framesPerSecond, 0);
    EXPECT_EQ(texture.playback, 2);

    read({"a.png", "b.png", "c.png"}, [](Writer& body) { body << true << true << 4 << 25 << 1; });
    EXPECT_THAT(texture.frameFiles, testing::ElementsAre("a.png", "b.png", "c.png"));
    EXPECT_TRUE(texture.reservedFlag && texture.randomStart);
    EXPECT_EQ(texture.startFrame, 4);
    EXPECT_EQ(texture.framesPerSecond, 25);
    EXPECT_EQ(texture.playback, 1);

    read({}, nothing);
    EXPECT_TRUE(texture.frameFiles.empty());
}

TEST(MaterialChunk, ValuesThatANewerExporterAddedToATextureAreSkipped)
{
    Writer writer;
    writeMaterial(writer, 0,
                  [](Writer& body)
                  {
                      body << true;
                      writeTexture(body, {"a.png"}, [](Writer& texture) { texture << 1 << 2 << "new"; });
                      body << false << true;
                      writeTexture(body, {"s.png"}, [](Writer&) {});
                      body << false;
                  });
    TWMaterialChunk material;
    readWritten(writer, material);
    EXPECT_TRUE(material.hasDiffuseTexture() && material.hasSpecularTexture());
    EXPECT_FALSE(material.hasReflectionTexture() || material.hasOpacityTexture());
    EXPECT_EQ(material.getSpecularTexture()->getFrameFile(0), "s.png");
}

TEST(MaterialChunk, WhatIsWrittenIsReadBackInEveryField)
{
    const TWMaterialChunk original = makeFullRecord();
    const TWMaterialChunk material = support::writeAndRead(original);
    EXPECT_EQ(toBytes(material), toBytes(original));
    EXPECT_EQ(material.getDiffuseTexture()->getStartFrame(), 5);
    EXPECT_EQ(*material.getGlossTexture(), *original.getGlossTexture());
    EXPECT_TRUE(material == original);
}

TEST(MaterialChunk, AListReadIntoAUsedRecordHoldsExactlyTheNewMaterials)
{
    MaterialListChunk full;
    full.texturePath = "old";
    full.materials = {makeFullRecord(), makeFullRecord(), makeFullRecord()};
    MaterialListChunk plain;
    plain.texturePath = "new;newer";
    plain.materials.resize(2);
    plain.materials[1].name = "plain";
    Writer fullFile;
    fullFile << full;
    Writer plainFile;
    plainFile << plain;
    MaterialListChunk list;
    readWritten(fullFile, list);
    EXPECT_EQ(list.getMaterialCount(), 3u);
    readWritten(plainFile, list);
    EXPECT_EQ(list.texturePath, "new;newer");
    ASSERT_EQ(list.getMaterialCount(), 2u);
    EXPECT_TRUE(list == plain);
    EXPECT_EQ(list.materials[1].getName(), "plain");
    EXPECT_FALSE(list.materials[0].hasOpacityTexture());
    // A slot that comes back brings nothing along from its earlier life.
    EXPECT_EQ(list.materials[0].accessDiffuseTexture(), MaterialTextureChunk());
    list.reset();
    EXPECT_TRUE(list == MaterialListChunk());
}

TEST(MaterialChunk, ResettingKeepsTheAlphaOfColoursAndNothingElse)
{
    TWMaterialChunk material = makeFullRecord();
    material.reset();
    EXPECT_EQ(material.ambientColor, G_FColor(0, 0, 0, 4));
    EXPECT_EQ(material.specularColor, G_FColor(0, 0, 0, 12));
    TWMaterialChunk fresh;
    fresh.ambientColor.alpha = 4;
    fresh.diffuseColor.alpha = 8;
    fresh.specularColor.alpha = 12;
    EXPECT_EQ(toBytes(material), toBytes(fresh));
}

TEST(MaterialChunk, CopiesOwnTheirTextures)
{
    const TWMaterialChunk original = makeFullRecord();
    TWMaterialChunk copy(original);
    EXPECT_EQ(toBytes(copy), toBytes(original));
    copy.accessDiffuseTexture().name = "changed";
    EXPECT_EQ(original.getDiffuseTexture()->getName(), "d");
    copy = TWMaterialChunk();
    EXPECT_FALSE(copy.hasDiffuseTexture());
    copy = original;
    EXPECT_EQ(toBytes(copy), toBytes(original));
    support::expectNothingLeftByFailedAllocations([&] { TWMaterialChunk{original}; });

    const S_Bytes before = toBytes(original);
    TWMaterialChunk target;
    target.name = "a name that is too long to be kept in place";
    S_Memory::failAllocation(3);
    EXPECT_THROW(target = original, S_MemoryException_Allocation);
    EXPECT_EQ(target.name, "a name that is too long to be kept in place");
    EXPECT_FALSE(target.hasDiffuseTexture());
}

TEST(MaterialChunk, ARecordThatWasMovedAwayHasNoTexturesAndCanBeUsedAgain)
{
    TWMaterialChunk original = makeFullRecord();
    TWMaterialChunk taken(std::move(original));
    const auto expectUsable = [](TWMaterialChunk& moved)
    {
        EXPECT_FALSE(moved.hasDiffuseTexture() || moved.hasGlossTexture());
        EXPECT_EQ(TWMaterialChunk(moved).getDiffuseTexture(), nullptr);
        moved.reset();
        EXPECT_EQ(moved.accessDiffuseTexture(), MaterialTextureChunk());
    };
    expectUsable(original);
    original = std::move(taken);
    expectUsable(taken);
    EXPECT_EQ(toBytes(original), toBytes(makeFullRecord()));
}

TEST(MaterialChunk, EqualityDecidesOnWhatAnEngineMaterialIsBuiltFrom)
{
    using Change = std::function<void(TWMaterialChunk&)>;
    const Change different[] = {
        [](auto& m) { m.twoSided = !m.twoSided; },
        [](auto& m) { m.fog = !m.fog; },
        [](auto& m) { m.reservedFlag = !m.reservedFlag; },
        [](auto& m) { m.invisibleGeometry = !m.invisibleGeometry; },
        [](auto& m) { m.vertexAlpha = !m.vertexAlpha; },
        [](auto& m) { m.shadeReflection = !m.shadeReflection; },
        [](auto& m) { m.alphaTest = !m.alphaTest; },
        [](auto& m) { m.alphaBlend = !m.alphaBlend; },
        [](auto& m) { ++m.alphaReference; },
        [](auto& m) { ++m.shading; },
        [](auto& m) { ++m.specular; },
        [](auto& m) { ++m.reflectionMapping; },
        [](auto& m) { ++m.glossChannel; },
        [](auto& m) { ++m.diffuseBlend; },
        [](auto& m) { ++m.reflectionBlend; },
        [](auto& m) { ++m.accessDiffuseTexture().filter; },
        [](auto& m) { ++m.accessReflectionTexture().mipLevels; },
        [](auto& m) { ++m.accessSpecularTexture().filter; },
        [](auto& m) { ++m.accessOpacityTexture().filter; },
        [](auto& m) { ++m.accessGlossTexture().mipLevels; },
    };
    const Change same[] = {
        [](auto& m) { m.name = "other"; },
        [](auto& m) { m.ambientColor = m.diffuseColor = m.specularColor = G_FColor(200, 201, 202); },
        [](auto& m) { m.vertexAlphaValue = m.specularExponent = 0.75f; },
        [](auto& m) {
            support::fillTexture(m.accessDiffuseTexture(), "other", {"1.png", "2.png", "3.png"});
        },
        [](auto& m) { m.accessDiffuseTexture().framesPerSecond = 60; },
    };
    const TWMaterialChunk original = makeFullRecord();
    const auto isEqualAfter = [&](const Change& change)
    {
        TWMaterialChunk changed = original;
        change(changed);
        EXPECT_EQ(changed == original, original == changed);
        return changed == original;
    };
    for (std::size_t i = 0; i < std::size(different); ++i)
    {
        EXPECT_FALSE(isEqualAfter(different[i])) << "change " << i;
    }
    for (std::size_t i = 0; i < std::size(same); ++i)
    {
        EXPECT_TRUE(isEqualAfter(same[i])) << "change " << i;
    }
    TWMaterialChunk without = original;
    without.reset();
    TWMaterialChunk with = without;
    with.accessGlossTexture();
    EXPECT_FALSE(with == without);
}
