#include "tests/support/chunk_files.h"
#include "tests/support/expectations.h"
#include "tests/support/temporary_directory.h"

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>

using support::messageOf;
using support::writeChunk;

namespace
{
using Chunk = S_MemoryFile::Chunk;
using WriteChunk = S_MemoryFileWriter::Chunk;

constexpr unsigned int s_outer = 0x10005;
constexpr unsigned int s_inner = 0x10000;
constexpr unsigned int s_other = 0x1001A;

void load(S_MemoryFile& file, const S_MemoryFileWriter& writer)
{
    file.constructFromMemory("walk.tw", writer.getBytes().data(), writer.getBytes().size());
}

template <typename T>
T take(S_MemoryFile& file)
{
    T value;
    file >> value;
    return value;
}

/// outer { inner version 3 { 1 2 } other { 3 } 4 } other { 5 }
S_MemoryFileWriter nestedFile()
{
    S_MemoryFileWriter writer;
    {
        const WriteChunk outer(writer, s_outer, 2);
        writeChunk(writer, s_inner, 3, 1, 2);
        writeChunk(writer, s_other, 0, 3);
        writer << 4;
    }
    writeChunk(writer, s_other, 0, 5);
    return writer;
}
}  // namespace

TEST(ChunkFile, EveryValueFormComesBackAsItWasWritten)
{
    const M_Matrix4x3Template<float> matrix = M_Matrix4x3Template<float>::translation({-1.5f, 0.0f, 1e30f});
    const std::string text("two\0words", 9);
    const S_Vector<S_String> names{"", "hip", "knee"};
    const S_Vector<S_Vector<float>> tracks{{0.25f}, {}, {1.0f, 2.0f}};
    S_MemoryFileWriter writer;
    {
        const WriteChunk chunk(writer, s_outer, 0);
        writer << std::numeric_limits<int>::min() << 4000000000u << -0.0f << true << false
               << static_cast<unsigned char>(200) << std::string_view(text) << M_Vector3Template<float>(1, 2, 3)
               << matrix;
        writer.writeList(names);
    }
    S_MemoryFile file;
    load(file, writer);
    Chunk chunk;
    file.openChunk(chunk, s_outer);
    EXPECT_EQ(take<int>(file), std::numeric_limits<int>::min());
    EXPECT_EQ(take<unsigned int>(file), 4000000000u);
    EXPECT_TRUE(std::signbit(take<float>(file)));
    EXPECT_TRUE(take<bool>(file));
    EXPECT_FALSE(take<bool>(file));
    EXPECT_EQ(take<unsigned char>(file), 200);
    EXPECT_EQ(std::string_view(take<S_String>(file)), text);
    EXPECT_EQ(take<M_Vector3Template<float>>(file), M_Vector3Template<float>(1, 2, 3));
    EXPECT_EQ(take<M_Matrix4x3Template<float>>(file), matrix);
    EXPECT_EQ(take<S_Vector<S_String>>(file), names);
    EXPECT_EQ(file.getRemaining(), 0u);
}

TEST(ChunkFile, TheBytesAreTheDocumentedOnes)
{
    S_MemoryFileWriter writer;
    {
        const WriteChunk chunk(writer, 0x10012, 1);
        writer << "ab" << 1.0f << true;
        writer.writeList(S_Vector<int>{-2});
    }
    const unsigned char expected[] = {0x12, 0, 1,    0,    1, 0,  0, 0, 23, 0, 0, 0, 2, 0,    0,    0,    'a', 'b',
                                      0,    0, 0x80, 0x3F, 1, 28, 0, 0, 0,  1, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(writer.getBytes(), S_Bytes(std::begin(expected), std::end(expected)));
}

TEST(ChunkFile, APartlyReadChunkIsSkippedToItsEndAtEveryLevel)
{
    S_MemoryFile file;
    load(file, nestedFile());
    Chunk top;
    file.peekChunk(top);
    ASSERT_TRUE(top.isValid());
    EXPECT_EQ(top.getID(), s_outer);
    EXPECT_EQ(top.getVersion(), 2u);
    {
        Chunk outer;
        file.openChunk(outer, s_outer);
        Chunk sub;
        outer.peekChunk(sub);
        EXPECT_EQ(sub.getID(), s_inner);
        EXPECT_EQ(sub.getSize(), 8u);
        {
            Chunk inner;
            file.openChunk(inner, s_inner);
            EXPECT_EQ(inner.getVersion(), 3u);
            EXPECT_EQ(take<int>(inner.getMemoryFile()), 1);
        }
        outer.skipChunk();
        outer.peekChunk(sub);  // peeked, never opened
        EXPECT_EQ(sub.getID(), s_other);
        outer.skipChunk();
        EXPECT_EQ(take<int>(file), 4);
        outer.peekChunk(sub);
        EXPECT_FALSE(sub.isValid());
        outer.skipChunk();
        EXPECT_EQ(file.getRemaining(), 0u);
    }
    file.skipChunk();
    file.peekChunk(top);
    EXPECT_EQ(top.getID(), s_other);
    file.skipChunk();
    file.peekChunk(top);
    EXPECT_FALSE(top.isValid());
    file.skipChunk();
    file.peekChunk(top);
    EXPECT_FALSE(top.isValid());

    file.seek(0, S_MemoryFile::seekBegin);
    file.peekChunk(top);
    EXPECT_EQ(top.getID(), s_outer);
}

TEST(ChunkFile, AnEmptyOrReleasedFileHasNoChunk)
{
    S_MemoryFile file(8192);
    Chunk chunk;
    const auto expectNothing = [&]
    {
        file.peekChunk(chunk);
        EXPECT_FALSE(chunk.isValid());
        file.skipChunk();
        file.seek(0, S_MemoryFile::seekBegin);
        int value = 0;
        EXPECT_EQ(messageOf([&] { file >> value; }),
                  "File \"\", top level, byte 0: expected an int of 4 bytes, 0 are left");
    };
    expectNothing();
    load(file, nestedFile());
    Chunk open;
    file.openChunk(open, s_outer);
    file.destruct();
    EXPECT_FALSE(open.isValid());
    EXPECT_NE(messageOf([&] { open.skipChunk(); }), "");
    expectNothing();
    load(file, nestedFile());
    EXPECT_NO_THROW(file.openChunk(open, s_outer));
}

TEST(ChunkFile, EveryComplaintNamesFileChunkByteAndExpectation)
{
    using Writer = S_MemoryFileWriter;
    using Reader = S_MemoryFile;
    const auto peek = [](Reader& file) { file.peekChunk(*std::make_unique<Chunk>()); };
    const auto open = [](Reader& file) { file.openChunk(*std::make_unique<Chunk>(), s_outer); };
    const auto peekInside = [](Reader& file)
    {
        Chunk outer;
        file.openChunk(outer, s_outer);
        outer.peekChunk(*std::make_unique<Chunk>());
    };
    const auto takeVectorInside = [](Reader& file)
    {
        Chunk outer;
        file.openChunk(outer, s_outer);
        take<M_Vector3Template<float>>(file);
    };
    const auto takeIntAndList = [](Reader& file)
    {
        take<int>(file);
        take<S_Vector<int>>(file);
    };
    const auto readFiveBytes = [](Reader& file) { file.read(std::array<char, 5>().data(), 5); };
    const auto peekInsidePeeked = [](Reader& file)
    {
        Chunk peeked;
        file.peekChunk(peeked);
        peeked.peekChunk(*std::make_unique<Chunk>());
    };
    const struct
    {
        std::function<void(Writer&)> write;
        std::function<void(Reader&)> read;
        const char* message;
    } cases[] = {
        {[](Writer& w) { writeChunk(w, s_other, 0); }, open,
         "top level, byte 0: expected chunk 0x10005, found chunk 0x1001A"},
        {[](Writer&) {}, open, "top level, byte 0: expected chunk 0x10005, but the file ends here"},
        {[](Writer& w) { w << 1 << 2; }, peek,
         "top level, byte 0: expected the 12 bytes of a chunk's header, 8 are left"},
        {[](Writer& w) { w << 0x10005 << 0 << 5 << 1; }, peek,
         "top level, byte 0: expected a chunk of at most 4 bytes, chunk 0x10005 says that it has 5"},
        {[](Writer& w) { writeChunk(w, s_outer, 0, s_inner, 0u, 0xFFFFFFFFu, 7), w << 1 << 2 << 3 << 4; }, peekInside,
         "chunk 0x10005, byte 12: expected a chunk of at most 4 bytes, chunk 0x10000 says that it has 4294967295"},
        {[](Writer& w) { writeChunk(w, s_outer, 0, 1.0f, 2.0f), w << 3.0f; }, takeVectorInside,
         "chunk 0x10005, byte 12: expected a vector of 12 bytes, 8 are left"},
        {[](Writer& w) { w << 0xFFFFFFFFu << 1; }, take<S_String>,
         "top level, byte 0: expected a string of 4294967295 bytes, 4 are left"},
        {[](Writer& w) { w << 1 << 28 << 0x7FFFFFFF << 9; }, takeIntAndList,
         "top level, byte 12: expected 2147483647 elements of at least 4 bytes, 4 are left"},
        {[](Writer& w) { w << 27 << 0; }, take<S_Vector<int>>, "top level, byte 0: expected type tag 28, found 27"},
        {[](Writer& w) { w << 1; }, readFiveBytes, "top level, byte 0: expected a block of 5 bytes, 4 are left"},
        {[](Writer& w) { w << 1; }, [](Reader& file) { file.seek(5, Reader::seekBegin); },
         "top level, byte 0: expected a seek to a byte from 0 to 4, not to 5"},
        {[](Writer& w) { writeChunk(w, s_other, 0); }, peekInsidePeeked,
         "top level, byte 0: expected chunk 0x1001A to be open"},
    };
    for (const auto& each : cases)
    {
        Writer writer;
        each.write(writer);
        Reader file;
        load(file, writer);
        EXPECT_EQ(messageOf([&] { each.read(file); }), std::string("File \"walk.tw\", ") + each.message);
    }
}

TEST(ChunkFile, CountsAreCheckedBeforeMemoryIsReserved)
{
    S_MemoryFileWriter writer;
    writer << -1 << 0xFFFFFFFFu << 5u << 1 << 2;
    S_MemoryFile file;
    load(file, writer);
    EXPECT_THROW(file.readCount(1), std::length_error);
    const long long allocations = S_Memory::sm_iNewCount;
    EXPECT_THROW(file.readUnsignedCount(12), S_MemoryFileException);
    EXPECT_EQ(file.readUnsignedCount(1), 5u);
    S_Vector<int> list;
    EXPECT_THROW(file.readBlock(list, 3), S_MemoryFileException);
    EXPECT_LT(S_Memory::sm_iNewCount - allocations, 10) << "messages aside nothing is allocated";
    file.readBlock(list, 2);
    EXPECT_EQ(list, (S_Vector<int>{1, 2}));
    EXPECT_NO_THROW(file.readBlock(list, 0));
    EXPECT_TRUE(list.empty());
    EXPECT_THROW(file.requireElements(~std::size_t(0) / 4 + 1, 4), S_MemoryFileException);
    EXPECT_THROW(writer.writeCount(std::size_t(1) << 31), S_MemoryFileException);
}

TEST(ChunkFile, ABlockIsReadFromAnyByteAndReplacesTheList)
{
    S_MemoryFileWriter writer;
    const S_Vector<M_Vector3Template<float>> points{{1, 2, 3}, {4, 5, 6}, {-7, 8, -9}};
    writer << true;
    writer.writeBlock(points);
    S_MemoryFile file;
    load(file, writer);
    take<bool>(file);
    S_Vector<M_Vector3Template<float>> list(100, {9, 9, 9});
    file.readBlock(list, points.size());
    EXPECT_EQ(list, points);
}

TEST(ChunkFile, HandlesMayEndInAnyOrder)
{
    S_MemoryFile file;
    load(file, nestedFile());
    auto outer = std::make_unique<Chunk>();
    auto inner = std::make_unique<Chunk>();
    file.openChunk(*outer, s_outer);
    file.openChunk(*inner, s_inner);
    outer.reset();
    EXPECT_EQ(file.getRemaining(), 8u) << "the inner chunk still bounds reads";
    inner.reset();
    EXPECT_GT(file.getRemaining(), 8u);

    // A walker that passes its own handle on finds its place again.
    file.seek(0, S_MemoryFile::seekBegin);
    Chunk walker;
    int chunks = 0;
    for (file.peekChunk(walker); walker.isValid(); file.peekChunk(walker), ++chunks)
    {
        file.openChunk(walker, walker.getID());
        file.skipChunk();
    }
    EXPECT_EQ(chunks, 2);

    // A handle that outlives the skip bounds nothing any more.
    file.seek(0, S_MemoryFile::seekBegin);
    Chunk forgotten;
    file.peekChunk(walker);
    file.openChunk(forgotten, s_outer);
    file.skipChunk();
    file.peekChunk(walker);
    ASSERT_TRUE(walker.isValid());
    EXPECT_EQ(walker.getID(), s_other);
    EXPECT_EQ(forgotten.getID(), s_outer);

    // The file goes first.
    auto owner = std::make_unique<S_MemoryFile>();
    load(*owner, nestedFile());
    Chunk opened;
    Chunk peeked;
    Chunk skipped;
    owner->openChunk(skipped, s_outer);
    owner->skipChunk();
    owner->peekChunk(peeked);
    owner->openChunk(opened, s_other);
    owner.reset();
    for (Chunk* orphan : {&opened, &peeked, &skipped})
    {
        EXPECT_FALSE(orphan->isValid());
        EXPECT_NE(messageOf([&] { orphan->skipChunk(); }), "");
    }
}

TEST(ChunkFile, ASkipGoesBehindTheChunkThatWasPeekedWhateverHappenedSince)
{
    S_MemoryFile file;
    load(file, nestedFile());
    Chunk first;
    file.skipChunk();
    EXPECT_EQ(file.getPosition(), 0u) << "nothing was peeked";
    file.peekChunk(first);
    const std::size_t second = first.getBodyOffset() + first.getSize();
    file.seek(3, S_MemoryFile::seekBegin);
    file.skipChunk();
    EXPECT_EQ(file.getPosition(), second);

    Chunk last;
    Chunk again;
    file.peekChunk(last);
    file.seek(0, S_MemoryFile::seekBegin);
    file.openChunk(again, s_outer);
    file.skipChunk();
    EXPECT_EQ(file.getRemaining(), 0u) << "opening another one is no peek";
    file.skipChunk(first);
    EXPECT_EQ(file.getPosition(), second);
    file.openChunk(again, s_other);  // without a peek
    file.skipChunk();
    EXPECT_EQ(file.getRemaining(), 0u);
    file.seek(0, S_MemoryFile::seekBegin);
    file.peekChunk(first);
    file.skipChunk();
    file.openChunk(again, s_other);
    file.skipChunk();
    EXPECT_EQ(file.getRemaining(), 0u) << "a skip ends what was peeked";
    load(file, nestedFile());
    file.skipChunk();
    EXPECT_EQ(file.getPosition(), 0u) << "nothing was peeked in this one";
}

TEST(ChunkFile, WhatMovesAnOuterChunkClosesThoseInside)
{
    S_MemoryFile file;
    load(file, nestedFile());
    Chunk outer;
    Chunk inner;
    Chunk next;
    file.openChunk(outer, s_outer);
    outer.skipChunk();
    EXPECT_EQ(file.getPosition(), outer.getBodyOffset()) << "there is nothing to skip yet";
    file.openChunk(inner, s_inner);
    EXPECT_EQ(take<int>(file) + take<int>(file), 3);
    outer.peekChunk(next);
    EXPECT_EQ(file.getRemaining(), 20u) << "of the outer one";
    file.seek(0, S_MemoryFile::seekBegin);
    EXPECT_EQ(file.getRemaining(), file.getFileSize());
    file.openChunk(outer, s_outer);
    file.openChunk(inner, s_inner);  // without a peek
    outer.skipChunk();
    EXPECT_EQ(file.getRemaining(), 20u);
}

TEST(ChunkFile, HandlesGoWithTheContentThatIsExchanged)
{
    S_MemoryFile file;
    S_MemoryFile other;
    load(file, nestedFile());
    Chunk peeked;
    Chunk opened;
    file.peekChunk(peeked);
    file.openChunk(opened, s_outer);
    const std::size_t position = file.getPosition();
    file.swap(other);
    EXPECT_EQ(file.getFileSize(), 0u);
    EXPECT_EQ(other.getPosition(), position);
    EXPECT_EQ(&opened.getMemoryFile(), &other);
    EXPECT_EQ(&peeked.getMemoryFile(), &other);
    file.destruct();
    EXPECT_EQ(other.getRemaining(), opened.getSize());
    const std::size_t second = opened.getBodyOffset() + opened.getSize();
    other.seek(static_cast<int>(second), S_MemoryFile::seekBegin);
    other.openChunk(opened, s_other);
    other.skipChunk();
    EXPECT_EQ(other.getPosition(), second) << "behind what was peeked before the exchange";
    other.destruct();
    EXPECT_FALSE(opened.isValid() || peeked.isValid());
}

TEST(ChunkFile, AFailedReadConsumesNothing)
{
    S_MemoryFileWriter writer;
    writer << 6u << static_cast<unsigned char>('x');
    S_MemoryFile file;
    load(file, writer);
    S_String text = "before";
    EXPECT_THROW(file >> text, S_MemoryFileException);
    EXPECT_EQ(text, "before");
    EXPECT_THROW(file.readTag(S_MemoryFile::basicTypeArray), S_MemoryFileException);
    EXPECT_EQ(take<unsigned int>(file), 6u);
}

TEST(ChunkFile, SavingReplacesTheFileAsAWholeAndAFailureLeavesTheOldOne)
{
    support::TemporaryDirectory directory;
    const std::string name = directory.file("scene.tw");
    nestedFile().save(name);
    S_MemoryFile file(name, S_MemoryFile::accessRead);
    EXPECT_EQ(file.getFilename(), name.c_str());
    Chunk chunk;
    EXPECT_NO_THROW(file.openChunk(chunk, s_outer));

    S_MemoryFileWriter unfinished;
    {
        const WriteChunk open(unfinished, s_outer, 0);
        EXPECT_EQ(messageOf([&] { unfinished.save(name); }),
                  "File \"" + name + "\", top level, byte 12: expected every chunk to be ended before saving");
    }
    EXPECT_THROW(unfinished.save(directory.file("nowhere/scene.tw")), S_FileException);
    const S_Bytes bytes = nestedFile().getBytes();
    EXPECT_EQ(directory.read("scene.tw"), std::string(bytes.begin(), bytes.end()));

    EXPECT_THROW(file.construct(directory.file("missing.tw"), S_MemoryFile::accessRead), S_FileException);
    file.peekChunk(chunk);
    EXPECT_FALSE(chunk.isValid()) << "the object is empty after a failed open";
    file.construct(name, S_MemoryFile::accessRead);
    file.construct(file.getFilename(), S_MemoryFile::accessRead);
    EXPECT_NO_THROW(file.openChunk(chunk, s_outer));
}

TEST(ChunkFile, FailedAllocationsOfASaveLeaveNothingBehind)
{
    support::TemporaryDirectory directory;
    const std::string name = directory.file("a scene whose name does not fit into a short string.tw");
    const S_MemoryFileWriter writer = nestedFile();
    support::expectNothingLeftByFailedAllocations([&] { writer.save(name); });
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.getPath()), {}), 1)
        << "no temporary file is left";
}
