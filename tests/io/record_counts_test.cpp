#include "tests/support/chunk_files.h"

#include <tw2/io/chunk_id.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/light/light_animation_chunks.h>
#include <tw2/material/material_list_chunk.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/memory_scope.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>

using namespace TW2;

namespace
{
/// A chunk of these values, with a count that nothing stands behind: too large, and negative.
template <typename Record, typename... Values>
void expectRefused(unsigned int number, const Values&... values)
{
    const std::string id = (std::ostringstream() << "chunk 0x" << std::hex << std::uppercase << number).str();
    for (const int count : {-1, 0x7FFFFFFF})
    {
        S_MemoryFileWriter writer;
        support::writeChunk(writer, number, 5, values..., count, 1.0f);
        const auto before = S_MemoryScope::getUsage("absurd counts");
        std::string complaint;
        try
        {
            const S_MemoryScope scope("absurd counts");
            support::readWritten<Record>(writer);
        }
        catch (const S_MemoryFileException& exception)
        {
            complaint = exception.getErrorMessage();
        }
        catch (const std::length_error&)
        {
            complaint = count < 0 ? id : "";
        }
        EXPECT_THAT(complaint, testing::HasSubstr(id)) << count;
        EXPECT_LT(S_MemoryScope::getUsage("absurd counts").m_iBytes - before.m_iBytes, 4096) << id << ", " << count;
    }
}
}  // namespace

TEST(RecordCounts, ThatAFileCannotHoldAreRefusedBeforeMemoryIsReserved)
{
    expectRefused<KeyframeAnimationChunk>(CHUNK_KEYFRAME_ANIMATION, AnimationHeader(), "", false, 10u);
    expectRefused<SpotLightAnimationChunk>(CHUNK_SPOT_LIGHT_ANIMATION, AnimationHeader(), 50, false);
    expectRefused<MaterialListChunk>(CHUNK_MATERIAL_LIST, "a path");
    expectRefused<MaterialTextureChunk>(CHUNK_MATERIAL_TEXTURE, "a name", 0, 0);
}
