#include "tests/support/chunk_files.h"
#include "tests/support/keyframe_tracks.h"

#include <tw2/keyframe/keyframe_animation_chunk.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

#include <gtest/gtest.h>

#include <random>

using TW2::KeyframeAnimationChunk;

namespace
{
KeyframeAnimationChunk makeChunk(unsigned int seed = 1)
{
    std::mt19937 random(seed);
    KeyframeAnimationChunk chunk = support::makeTrack(random, {.frames = 100,
                                                               .keys = 7,
                                                               .looping = true,
                                                               .loopInterpolation = true,
                                                               .loopToFrame = 12,
                                                               .interpolationMode = 2,
                                                               .keepScale = true,
                                                               .visibilityKeys = 3});
    chunk.objectName = "second name";
    return chunk;
}

KeyframeAnimationChunk read(const S_MemoryFileWriter& writer, KeyframeAnimationChunk into = {})
{
    support::readWritten(writer, into);
    return into;
}
}  // namespace

TEST(KeyframeAnimationChunk, WhatIsWrittenIsReadBack)
{
    KeyframeAnimationChunk chunk = support::writeAndRead(makeChunk());
    EXPECT_EQ(chunk, makeChunk());
    EXPECT_NE(chunk, makeChunk(2));
    chunk.clear();
    EXPECT_EQ(chunk, KeyframeAnimationChunk());
}

TEST(KeyframeAnimationChunk, EachVersionFillsItsFieldsAndKeepsTheOthers)
{
    KeyframeAnimationChunk previous = makeChunk(2);
    previous.loopToFrame = 77;
    previous.interpolationMode = 1;
    previous.keepScale = false;
    for (unsigned int version = 0; version <= 6; ++version)
    {
        KeyframeAnimationChunk expected = makeChunk();
        if (version < 1)
        {
            expected.visibilityKeys = previous.visibilityKeys;
        }
        if (version < 2)
        {
            expected.loopToFrame = 77;
        }
        if (version < 3)
        {
            expected.interpolationMode = 1;
        }
        expected.keepScale = version >= 4;
        S_MemoryFileWriter writer;
        support::writeTrack(writer, makeChunk(), version);
        EXPECT_EQ(read(writer, previous), expected) << "version " << version;
        if (version == 0)
        {
            const KeyframeAnimationChunk fresh = read(writer);
            EXPECT_EQ(fresh.totalFrameCount, 100u) << "the file holds the number of the last frame, 99";
            EXPECT_TRUE(fresh.visibilityKeys.empty());
            EXPECT_EQ(fresh.interpolationMode, 0);
            EXPECT_FALSE(fresh.keepScale);
        }
    }
}

TEST(KeyframeAnimationChunk, ANewerHeaderAndANewerChunkAreSkippedToTheirEnds)
{
    const KeyframeAnimationChunk expected = makeChunk();
    const auto header = [&header = expected.header](S_MemoryFileWriter& w)
    {
        support::writeChunk(w, TW2::CHUNK_ANIMATION_HEADER, 3, header.targetName, header.frameRate, header.looping,
                            5.0F, "new");
    };
    S_MemoryFileWriter writer;
    support::writeChunk(writer, TW2::CHUNK_KEYFRAME_ANIMATION, 9, header, expected.objectName,
                        expected.loopInterpolation, expected.totalFrameCount, 0, 0, expected.loopToFrame,
                        expected.interpolationMode, expected.keepScale, "new");
    writer << expected;
    S_MemoryFile file;
    support::openWritten(file, writer);
    KeyframeAnimationChunk newer;
    file >> newer;
    EXPECT_EQ(newer.header, expected.header);
    EXPECT_TRUE(newer.keys.empty());
    EXPECT_EQ(newer.totalFrameCount, 100u);
    S_MemoryFile::Chunk peeked;
    file.seek(0, S_MemoryFile::seekBegin);
    file.peekChunk(peeked);
    file.skipChunk();
    KeyframeAnimationChunk second;
    file >> second;
    EXPECT_EQ(second, expected);
}
