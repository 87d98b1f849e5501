#include "src/material/material_set_up.h"

#include <tw2/material/material_chunk.h>

#include <gtest/gtest.h>

#include <utility>

using namespace TW2;

namespace
{
constexpr int shaded = 2;

/// One combination of everything that decides, from the bits of a number.
struct Combination
{
    static constexpr unsigned int count = 3 << 7;

    explicit Combination(unsigned int number) : m_iShading(static_cast<int>(number >> 7))
    {
        const auto bit = [number](unsigned int i) { return (number >> i & 1) != 0; };
        m_bDiffuse = bit(0);
        m_bReflection = bit(1);
        m_bSpecular = bit(2);
        m_bGloss = bit(3);
        m_bVertexAlpha = bit(4);
        m_bAlphaTest = bit(5);
        m_bPixelShaders = bit(6);
    }

    [[nodiscard]] TWMaterialChunk makeRecord() const
    {
        TWMaterialChunk record;
        record.shading = m_iShading;
        record.vertexAlpha = m_bVertexAlpha;
        record.alphaTest = m_bAlphaTest;
        if (m_bDiffuse)
        {
            record.accessDiffuseTexture();
        }
        if (m_bReflection)
        {
            record.accessReflectionTexture();
        }
        if (m_bSpecular)
        {
            record.accessSpecularTexture();
        }
        if (m_bGloss)
        {
            record.accessGlossTexture();
        }
        return record;
    }

    int m_iShading;
    bool m_bDiffuse;
    bool m_bReflection;
    bool m_bSpecular;
    bool m_bGloss;
    bool m_bVertexAlpha;
    bool m_bAlphaTest;
    bool m_bPixelShaders;
};
}  // namespace

TEST(MaterialSetUps, TheFirstRuleThatHoldsDecides)
{
    for (unsigned int number = 0; number < Combination::count; ++number)
    {
        const Combination c(number);
        const bool plain = c.m_bDiffuse && c.m_iShading == shaded && !c.m_bVertexAlpha;
        const std::pair<bool, MaterialSetUp> rules[] = {
            {plain && !c.m_bReflection && c.m_bAlphaTest, MaterialSetUp::Transparent},
            {plain && !c.m_bReflection, MaterialSetUp::Textured},
            {plain && c.m_bReflection, MaterialSetUp::Environment},
            {c.m_bSpecular && c.m_bPixelShaders, MaterialSetUp::Specular},
            {c.m_bGloss, MaterialSetUp::Gloss},
            {true, MaterialSetUp::General}};
        const auto* rule = rules;
        while (!rule->first)
        {
            ++rule;
        }
        EXPECT_EQ(selectSetUp(c.makeRecord(), c.m_bPixelShaders), rule->second) << "combination " << number;
    }
}
