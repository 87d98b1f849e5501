#include "src/material/material_set_up.h"

#include <tw2/material/material_chunk.h>

#include <gtest/gtest.h>

#include <utility>

using namespace TW2;

// Every combination of what decides, from the bits of a number.
TEST(MaterialSetUps, TheFirstRuleThatHoldsDecides)
{
    MaterialTextureChunk& (TWMaterialChunk::*const slots[])() = {
        &TWMaterialChunk::accessDiffuseTexture, &TWMaterialChunk::accessReflectionTexture,
        &TWMaterialChunk::accessSpecularTexture, &TWMaterialChunk::accessGlossTexture};
    constexpr int shaded = 2;
    for (unsigned int number = 0; number < 3 << 7; ++number)
    {
        const auto bit = [number](std::size_t i) { return (number >> i & 1) != 0; };
        TWMaterialChunk record;
        record.shading = static_cast<int>(number >> 7);
        record.vertexAlpha = bit(4);
        record.alphaTest = bit(5);
        const bool pixelShaders = bit(6);
        for (std::size_t slot = 0; slot < 4; ++slot)
        {
            if (bit(slot))
            {
                (record.*slots[slot])();
            }
        }
        const bool plain = bit(0) && record.shading == shaded && !record.vertexAlpha;
        const std::pair<bool, MaterialSetUp> rules[] = {
            {plain && !bit(1) && record.alphaTest, MaterialSetUp::Transparent},
            {plain && !bit(1), MaterialSetUp::Textured},
            {plain && bit(1), MaterialSetUp::Environment},
            {bit(2) && pixelShaders, MaterialSetUp::Specular},
            {bit(3), MaterialSetUp::Gloss},
            {true, MaterialSetUp::General}};
        const auto* rule = rules;
        while (!rule->first)
        {
            ++rule;
        }
        EXPECT_EQ(selectSetUp(record, pixelShaders), rule->second) << "combination " << number;
    }
}
