#include "tests/support/expectations.h"
#include "tests/support/material_records.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/material_manager.h>

#include <platform/runtime/memory_scope.h>
#include <platform/scene/map.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace TW2;

namespace
{
/// A material whose diffuse slot has these files; `set` is the texture's name.
TWMaterialChunk makeRecord(const char* name, const char* set, std::initializer_list<const char*> files)
{
    TWMaterialChunk record;
    record.name = name;
    record.shading = 0;
    MaterialTextureChunk& diffuse = support::fillTexture(record.accessDiffuseTexture(), set, files);
    diffuse.framesPerSecond = 2;
    diffuse.playback = 0;
    return record;
}

class MaterialManager : public testing::Test
{
protected:
    MaterialManager() { m_folder.add({"0.png", "1.png", "2.png"}); }

    static char getShown(const TW_Material& material, unsigned int layer = 0)
    {
        const S_String& file = material.getMaterial()->getTexture(layer)->getFilename();
        return file[file.size() - 5];
    }
    /// Three materials: two share the set "water", the last one has a still texture and an animated reflection "sky".
    static void fill(TW_MaterialManager& manager)
    {
        manager.addMaterial(makeRecord("sea", "water", {"0.png", "1.png", "2.png"}));
        manager.addMaterial(makeRecord("lake", "water", {"1.png", "2.png"}));
        TWMaterialChunk mirror = makeRecord("mirror", "glass", {"0.png"});
        mirror.accessReflectionTexture() = *makeRecord("", "sky", {"0.png", "1.png"}).getDiffuseTexture();
        manager.addMaterial(mirror);
    }

    support::TextureFolder m_folder;
    TW_MaterialManager m_manager;
};
}  // namespace

TEST_F(MaterialManager, FindsTheFirstMaterialOfANameAndKeepsAllInOrder)
{
    EXPECT_TRUE(m_manager.isConstructed());
    m_manager.addMaterial(makeRecord("a", "x", {"0.png"}));
    m_manager.addMaterial(makeRecord("b", "x", {"1.png"}));
    m_manager.addMaterial(makeRecord("a", "x", {"2.png"}));
    EXPECT_EQ(m_manager.getMaterialCount(), 3u);
    EXPECT_EQ(m_manager.findMaterial("a"), m_manager.getMaterial(0));
    EXPECT_EQ(m_manager.findMaterial("b"), m_manager.getMaterial(1));
    EXPECT_EQ(getShown(*m_manager.getMaterial(2)), '2');
    EXPECT_EQ(m_manager.findMaterial("A"), nullptr);
    m_manager.addToTextureMemory();
    EXPECT_TRUE(m_manager.getMaterial(2)->getMaterial()->getTexture(0)->isInTextureMemory());
    m_manager.removeFromTextureMemory();
    EXPECT_FALSE(m_manager.getMaterial(0)->getMaterial()->getTexture(0)->isInTextureMemory());
    m_manager.construct();
    EXPECT_EQ(m_manager.getMaterialCount(), 0u);
    EXPECT_EQ(m_manager.findMaterial("a"), nullptr);
}

TEST_F(MaterialManager, AnimatedTexturesOfOneNameAreASetAndPlayTogether)
{
    fill(m_manager);
    ASSERT_EQ(m_manager.getTotalTextureAnimationSets(), 2u);
    EXPECT_EQ(m_manager.getTextureAnimationIndex("water"), 0);
    EXPECT_EQ(m_manager.getTextureAnimationIndex("sky"), 1);
    EXPECT_EQ(m_manager.getTextureAnimationSetName(0), "water");
    EXPECT_EQ(m_manager.getTextureAnimationSetName(1), "sky");
    EXPECT_EQ(m_manager.getTextureAnimationSetName(2), "");
    EXPECT_FALSE(m_manager.textureAnimationExists("glass"));
    EXPECT_EQ(m_manager.getTotalTextureAnimations(0), 2u);
    EXPECT_EQ(m_manager.getTotalTextureAnimations("sky"), 1u);
    EXPECT_EQ(m_manager.getTextureAnimationFrames("water", 0), 3u);
    EXPECT_EQ(m_manager.getTextureAnimationFrames(0, 1), 2u);
    EXPECT_EQ(m_manager.getTextureAnimationLength("water", 0), 1.5f);

    EXPECT_TRUE(m_manager.animateTexture("water", 0.5f));
    EXPECT_EQ(getShown(*m_manager.getMaterial(0)), '1');
    EXPECT_EQ(getShown(*m_manager.getMaterial(1)), '2');
    EXPECT_EQ(getShown(*m_manager.getMaterial(2), 1), '0');
    EXPECT_TRUE(m_manager.animateTextureFrame(1, 1));
    EXPECT_EQ(getShown(*m_manager.getMaterial(2), 1), '1');

    m_manager.setTextureAnimationFPS("water", 1, 20);
    EXPECT_EQ(m_manager.getTextureAnimationFPS(0, 0), 2.0f);
    EXPECT_EQ(m_manager.getTextureAnimationFPS("water", 1), 20.0f);
}

TEST_F(MaterialManager, AMissingTextureIsToldWithItsSlotAndMaterial)
{
    TWMaterialChunk record = makeRecord("oak", "wood", {"0.png"});
    record.accessReflectionTexture() = *makeRecord("", "sky", {"no.png"}).getDiffuseTexture();
    EXPECT_THAT(support::complaintOf<TW_Exception_TextureNotFound>([&] { m_manager.addMaterial(record); }),
                testing::AllOf(testing::StartsWith("TW2: Texture \"no.png\" not found (looked for in \""),
                               testing::EndsWith("; reflection texture of material \"oak\")")));
    EXPECT_EQ(m_manager.getMaterialCount(), 0u);
}

TEST_F(MaterialManager, UnknownSetsAndAnimationsAnswerNothing)
{
    fill(m_manager);
    EXPECT_EQ(support::messageOf([&] { static_cast<void>(m_manager.getTextureAnimationIndex("fire")); }),
              "TW2: Texture \"fire\" not found");
    EXPECT_FALSE(m_manager.isValidAnimationSet("fire") || m_manager.animateTexture("fire", 1) ||
                 m_manager.animateTextureFrame("fire", 1));
    EXPECT_EQ(m_manager.getTotalTextureAnimations("fire"), 0u);
    EXPECT_FALSE(m_manager.animateTexture(-1, 0) || m_manager.animateTextureFrame(2, 0));
    const std::pair<int, int> invalid[] = {{-1, 0}, {2, 0}, {0, -1}, {0, 2}, {1, 1}};
    for (const auto& [set, animation] : invalid)
    {
        EXPECT_FALSE(m_manager.isValidAnimation(set, animation)) << set << ' ' << animation;
        EXPECT_EQ(m_manager.getTextureAnimationFrames(set, animation), 0u);
        EXPECT_EQ(m_manager.getTextureAnimationLength(set, animation), 0.0f);
        EXPECT_EQ(m_manager.getTextureAnimationFPS(set, animation), 0.0f);
        m_manager.setTextureAnimationFPS(set, animation, 99);
    }
    EXPECT_EQ(m_manager.getTextureAnimationFrames("fire", 0), 0u);
    EXPECT_EQ(m_manager.getTextureAnimationLength("water", 2), 0.0f);
    EXPECT_TRUE(m_manager.isValidAnimation("water", 1));
    EXPECT_EQ(m_manager.getTextureAnimationFPS(0, 0), 2.0f);
}

TEST_F(MaterialManager, ACopySharesStillMaterialsAndPlaysItsOwnAnimations)
{
    fill(m_manager);
    m_manager.addMaterial(makeRecord("wall", "brick", {"2.png"}));
    auto copy = std::make_unique<TW_MaterialManager>(m_manager);
    EXPECT_EQ(copy->getMaterialCount(), 4u);
    EXPECT_EQ(copy->getTextureAnimationIndex("sky"), 1);
    EXPECT_EQ(copy->getTotalTextureAnimations("water"), 2u);
    EXPECT_EQ(copy->findMaterial("wall")->getMaterial(), m_manager.findMaterial("wall")->getMaterial());
    EXPECT_TRUE(copy->animateTextureFrame("water", 2));
    EXPECT_EQ(getShown(*copy->getMaterial(0)), '2');
    EXPECT_EQ(getShown(*m_manager.getMaterial(0)), '0');
    m_manager.construct(m_manager);
    EXPECT_EQ(m_manager.getMaterialCount(), 4u);
    m_manager.destruct();
    EXPECT_FALSE(m_manager.isConstructed());
    EXPECT_EQ(getShown(*copy->findMaterial("wall")), '2');
}

TEST_F(MaterialManager, PrimitivesAreGivenTheMaterialsOfTheSameNames)
{
    TW_MaterialManager source;
    TW_MaterialManager empty;
    for (const char* name : {"a", "b", "only here"})
    {
        source.addMaterial(makeRecord(name, "x", {"0.png"}));
    }
    for (const char* name : {"b", "a"})
    {
        m_manager.addMaterial(makeRecord(name, "x", {"1.png"}));
    }
    P_Material foreign;
    P_VirtualObject object(5);
    P_Material* const before[] = {source.findMaterial("a")->getMaterial(), source.findMaterial("b")->getMaterial(),
                                  source.findMaterial("only here")->getMaterial(), &foreign, nullptr};
    const auto getMaterials = [&]
    {
        std::vector<P_Material*> materials;
        for (int i = 0; i < object.getPrimitiveCount(); ++i)
        {
            materials.push_back(object.getPrimitiveInstance(i)->getMaterial());
        }
        return materials;
    };
    for (int i = 0; i < object.getPrimitiveCount(); ++i)
    {
        object.getPrimitiveInstance(i)->setMaterial(before[i]);
    }
    m_manager.remapMaterials(&object, &empty);
    EXPECT_THAT(getMaterials(), testing::ElementsAreArray(before));
    m_manager.remapMaterials(&object, &source);
    EXPECT_THAT(getMaterials(),
                testing::ElementsAre(m_manager.findMaterial("a")->getMaterial(),
                                     m_manager.findMaterial("b")->getMaterial(), before[2], &foreign, nullptr));
}

TEST_F(MaterialManager, AFailureWhileAddingLeavesTheManagerAsItWas)
{
    const TWMaterialChunk sea = makeRecord("sea", "water", {"0.png", "1.png"});
    TWMaterialChunk two = makeRecord("a name that does not fit into the string itself",
                                     "the name of a set that does not fit either", {"1.png", "2.png"});
    two.accessReflectionTexture() = *sea.getDiffuseTexture();
    support::expectNothingLeftByFailedAllocations(
        [&]
        {
            TW_MaterialManager manager;
            manager.addMaterial(sea);
            try
            {
                manager.addMaterial(two);
                EXPECT_EQ(manager.getTotalTextureAnimations("water"), 2u);
                const TW_MaterialManager copy(manager);
            }
            catch (const S_MemoryException_Allocation&)
            {
                if (manager.getMaterialCount() == 1)
                {
                    EXPECT_EQ(manager.findMaterial(two.name), nullptr);
                    EXPECT_EQ(manager.getTotalTextureAnimationSets(), 1u);
                    EXPECT_EQ(manager.getTotalTextureAnimations("water"), 1u);
                    manager.addMaterial(two);
                }
                EXPECT_EQ(manager.getTextureAnimationIndex("the name of a set that does not fit either"), 1);
                throw;
            }
        });
    EXPECT_THROW(m_manager.addMaterial(makeRecord("bad", "x", {"none.png"})), TW_Exception_TextureNotFound);
    EXPECT_EQ(m_manager.getMaterialCount(), 0u);
}

TEST_F(MaterialManager, MaterialsAddedAfterDestructingAreFreedToo)
{
    const long long live = S_Memory::getLiveCount();
    for (int i = 0; i < 2; ++i)
    {
        m_manager.destruct();
        EXPECT_THROW(m_manager.addMaterial(makeRecord("bad", "x", {"none.png"})), TW_Exception_TextureNotFound);
        EXPECT_FALSE(m_manager.isConstructed());
        m_manager.addMaterial(makeRecord("a", "x", {"0.png", "1.png"}));
        EXPECT_EQ(m_manager.getMaterialCount(), 1u);
        EXPECT_TRUE(m_manager.isConstructed());
    }
    m_manager.construct();
    EXPECT_EQ(m_manager.getMaterialCount(), 0u);
    EXPECT_EQ(S_Memory::getLiveCount(), live);
}
