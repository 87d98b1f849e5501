#include "tests/support/every_kind.h"
#include "tests/support/expectations.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/verbose_capture.h"

#include <tw2/io/chunk_id.h>
#include <tw2/io/loader.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <regex>
#include <stdexcept>

using namespace TW2;
using support::TemporaryDirectory;
using testing::ElementsAre;
using testing::HasSubstr;
namespace
{
/// Notes what arrives.
class Listener : public support::EveryCallback
{
public:
    std::vector<std::string> m_heard;
    std::vector<const void*> m_records;
    std::function<void()> m_onMesh = [] {};
    std::function<void(S_MemoryFile&)> m_onUnknown = [](S_MemoryFile&) {};

    void operator()(const M_Matrix4x3Template<float>& transform, float value1, float value2, float value0) override
    {
        const M_Vector3Template<float> t = transform.getTranslation();
        std::ostringstream text;
        text << "camera at " << t.x << t.y << t.z << ": " << value1 << value2 << value0;
        m_heard.push_back(text.str());
    }
    void operator()(const SpotLightAnimationChunk& animation) override { hear("animated ", animation.header); }
    void operator()(const DirectionalLightAnimationChunk& animation) override { hear("animated ", animation.header); }
    void operator()(const PointLightAnimationChunk& animation) override { hear("animated ", animation.header); }
    void operator()(const SpotLightChunk& light) override { hear(light); }
    void operator()(const DirectionalLightChunk& light) override { hear(light); }
    void operator()(const PointLightChunk& light) override { hear(light); }
    void operator()(const HelperChunk& helper) override { hear(helper); }
    void operator()(const EnvironmentChunk&) override { m_heard.emplace_back("environment"); }
    void operator()(MeshChunk& mesh) override
    {
        hear(mesh);
        m_records.push_back(&mesh);
        m_onMesh();
    }
    P_TriangleMesh* createTriangleMesh(P_VirtualObject*, int, int, int, int, const S_Vector<int>&) override
    {
        ADD_FAILURE() << "the loader makes no triangle meshes";
        return nullptr;
    }
    void operator()(MaterialListChunk& materials) override
    {
        m_heard.push_back(std::to_string(materials.materials.size()) + " materials");
        m_records.push_back(&materials);
    }
    void operator()(KeyframeAnimationChunk& animation) override
    {
        hear("animation of ", animation.header);
        m_records.push_back(&animation);
    }
    void operator()(S_MemoryFile& file) override
    {
        S_MemoryFile::Chunk chunk;
        file.peekChunk(chunk);
        std::ostringstream text;
        text << "unknown " << std::hex << chunk.getID();
        m_heard.push_back(text.str());
        // Reading on from here is the callback's business, and how far it comes the loader's no longer.
        file.openChunk(chunk, chunk.getID());
        unsigned char byte = 0;
        file >> byte;
        m_onUnknown(file);
    }

    std::vector<std::string> take() { return std::exchange(m_heard, {}); }

private:
    void hear(const NodeChunk& node) { m_heard.emplace_back(node.name); }
    void hear(const char* what, const AnimationHeader& header)
    {
        m_heard.push_back(what + std::string(header.targetName));
    }
};

std::vector<const void*> getCallbacks()
{
    return {TW_Loader::getHelperCallback(),       TW_Loader::getEnvironmentCallback(),
            TW_Loader::getLightCallback(),        TW_Loader::getCameraCallback(),
            TW_Loader::getUnknownChunkCallback(), TW_Loader::getMaterialListCallback(),
            TW_Loader::getMeshCallback(),         TW_Loader::getKeyframeAnimationCallback()};
}

class Loader : public testing::Test
{
protected:
    ~Loader() override
    {
        TW_Loader::clearAll();
        TW_Loader::freeCachedFile();
    }

    std::string writeMeshes(const char* fileName, const std::vector<const char*>& names)
    {
        S_MemoryFileWriter writer;
        for (const char* name : names)
        {
            writer << support::makeStripMesh(name, 1);
        }
        return m_directory.write(fileName, writer.getBytes());
    }
    void remove(const std::string& file) { std::filesystem::remove(file); }

    TemporaryDirectory m_directory;
    Listener m_listener;
};

const std::vector<const void*> s_nobody(8, nullptr);
}  // namespace

TEST_F(Loader, HandsEveryKindToItsCallbackAndTheRestToTheOneForUnknownChunks)
{
    S_MemoryFileWriter writer;
    support::writeEveryKind(writer);
    support::writeChunk(writer, 0x1001B, 0, 1);
    const std::string file = m_directory.write("all.tw", writer.getBytes());
    TW_Loader::load(file, false);  // nobody listens: nothing is read
    m_listener.listen();
    TW_Loader::load(file, true);
    EXPECT_THAT(m_listener.take(),
                ElementsAre("camera at 123: 231", "point", "directional", "spot", "2 materials", "mesh", "field",
                            "animation of mesh", "environment", "helper", "animated point", "animated directional",
                            "animated spot", "unknown 10000", "unknown 10014", "unknown 1001b"));
}

TEST_F(Loader, WhoListensToOneKindOfLightHearsNothingOfTheOthers)
{
    class Lamps : public TW_LightCallback
    {
    public:
        using TW_LightCallback::operator();
        void operator()(const PointLightChunk& light) override { m_heard.emplace_back(light.name); }
        std::vector<std::string> m_heard;
    } lamps;
    S_MemoryFileWriter writer;
    support::writeEveryKind(writer);
    TW_Loader::setLightCallback(&lamps);
    TW_Loader::load(m_directory.write("all.tw", writer.getBytes()), true);
    EXPECT_THAT(lamps.m_heard, ElementsAre("point"));
}

TEST_F(Loader, SkipsKindsWithoutACallbackUnread)
{
    S_MemoryFileWriter writer;
    for (const unsigned int id : {CHUNK_CAMERA, CHUNK_MESH, CHUNK_SPOT_LIGHT, CHUNK_KEYFRAME_ANIMATION})
    {
        support::writeChunk(writer, id, 0, 0xFFFFFFFFu);
    }
    writer << support::makeStripMesh("mesh", 1);
    const std::string file = m_directory.write("broken.tw", writer.getBytes());
    EXPECT_NO_THROW(TW_Loader::load(file, true));
    TW_Loader::setHelperCallback(&m_listener);
    EXPECT_NO_THROW(TW_Loader::load(file, true));
    TW_Loader::setMeshCallback(&m_listener);
    EXPECT_THROW(TW_Loader::load(file, true), S_MemoryFileException);
}

TEST_F(Loader, ReusesLargeRecordsAndRefillsThem)
{
    const std::string file = writeMeshes("two.tw", {"first", "second"});
    std::vector<std::size_t> channels;
    m_listener.m_onMesh = [&]
    {
        const MeshChunk& mesh = *static_cast<const MeshChunk*>(m_listener.m_records.back());
        channels.push_back(
            static_cast<std::size_t>(std::count(mesh.channelUsed.begin(), mesh.channelUsed.end(), true)));
    };
    m_listener.listen();
    TW_Loader::load(file, true);
    EXPECT_THAT(m_listener.take(), ElementsAre("first", "second"));
    EXPECT_EQ(m_listener.m_records[0], m_listener.m_records[1]);
    EXPECT_THAT(channels, ElementsAre(1, 1));
}

TEST_F(Loader, KeepsAFileInMemoryUntilItIsFreedOrReplaced)
{
    m_listener.listen();
    const std::string file = writeMeshes("Cached.tw", {"old"});
    const std::string upper = m_directory.file("CACHED.TW");
    TW_Loader::cacheFileForLoading(file);
    // The file on disk is gone: what is heard from now on comes from memory.
    remove(file);
    TW_Loader::load(file, false);
    TW_Loader::load(upper, false);
    EXPECT_THAT(m_listener.take(), ElementsAre("old", "old"));
    TW_Loader::load(upper, true);
    EXPECT_THAT(m_listener.take(), ElementsAre("old"));
    EXPECT_THROW(TW_Loader::load(file, false), S_FileException);

    writeMeshes("Cached.tw", {"new"});
    TW_Loader::load(file, false);
    const std::string other = writeMeshes("other.tw", {"other"});
    TW_Loader::load(other, false);
    remove(other);
    TW_Loader::load(other, false);
    TW_Loader::load(file, false);
    TW_Loader::freeCachedFile();
    remove(file);
    EXPECT_THROW(TW_Loader::load(file, false), S_FileException);
    EXPECT_THAT(m_listener.take(), ElementsAre("new", "other", "other", "new"));
}

TEST_F(Loader, AFileThatCannotBeOpenedIsTriedAgain)
{
    m_listener.listen();
    const std::string late = m_directory.file("late.tw");
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_THROW(TW_Loader::load(late, false), S_FileException);
        EXPECT_THROW(TW_Loader::load("", false), S_FileException);
    }
    writeMeshes("late.tw", {"here"});
    TW_Loader::load(late, false);
    std::filesystem::remove(late);  // the one in memory stays
    EXPECT_THROW(TW_Loader::cacheFileForLoading(m_directory.file("never.tw")), S_FileException);
    TW_Loader::load(late, true);
    EXPECT_THAT(m_listener.take(), ElementsAre("here", "here"));
}

TEST_F(Loader, AWalkGoesOnBehindItsChunkWhereverACallbackMovesTheFile)
{
    S_MemoryFileWriter writer;
    writer << support::makeStripMesh("before", 1);
    support::writeChunk(writer, 0x1001B, 0, 1);
    writer << support::makeStripMesh("after", 1);
    const std::string file = m_directory.write("moved.tw", writer.getBytes());
    S_MemoryFile::Chunk kept;
    const std::function<void(S_MemoryFile&)> moves[] = {
        [](S_MemoryFile& f) { f.seek(0, S_MemoryFile::seekBegin); },
        [&](S_MemoryFile& f)
        {
            f.seek(0, S_MemoryFile::seekBegin);
            f.peekChunk(kept);
        },
        [&](S_MemoryFile& f)
        {
            f.seek(0, S_MemoryFile::seekBegin);
            f.openChunk(kept, CHUNK_MESH);
        },
        [](S_MemoryFile& f)
        {
            f.skipChunk();
            f.skipChunk();
        },
    };
    m_listener.listen();
    for (const auto& move : moves)
    {
        m_listener.m_onUnknown = move;
        TW_Loader::load(file, true);
        EXPECT_THAT(m_listener.take(), ElementsAre("before", "unknown 1001b", "after")) << &move - moves;
        EXPECT_FALSE(kept.isValid());
    }

    S_MemoryFile other;
    const std::function<void(S_MemoryFile&)> replacements[] = {
        [&](S_MemoryFile& f) { f.swap(other); },
        [](S_MemoryFile& f) { f.destruct(); },
        [&](S_MemoryFile& f) { f.construct(S_String(file.c_str()), S_MemoryFile::accessRead); },
    };
    for (const auto& replace : replacements)
    {
        m_listener.m_onUnknown = replace;
        EXPECT_EQ(support::messageOf([&] { TW_Loader::load(file, false); }).find("File \"" + file), 0u);
        EXPECT_THAT(m_listener.take(), ElementsAre("before", "unknown 1001b"));
        m_listener.m_onUnknown = [](S_MemoryFile&) {};
        TW_Loader::load(file, true);
        EXPECT_THAT(m_listener.take(), ElementsAre("before", "unknown 1001b", "after"));
    }
}

TEST_F(Loader, ACallbackMayLoadOtherFilesAndTheSameOne)
{
    const std::string outer = writeMeshes("outer.tw", {"first", "second"});
    const std::string inner = writeMeshes("inner.tw", {"a", "b"});
    const std::function<void()> loads[] = {
        [&] { TW_Loader::load(inner, false); },
        [&] { TW_Loader::load(inner, true); },
        [&]
        {
            TW_Loader::cacheFileForLoading(inner);
            remove(inner);
            TW_Loader::load(inner, false);
            TW_Loader::freeCachedFile();
            EXPECT_THROW(TW_Loader::load(inner, false), S_FileException);
            writeMeshes("inner.tw", {"a", "b"});
        },
        [&]
        {
            TW_Loader::freeCachedFile();
            TW_Loader::load(inner, true);
        },
    };
    m_listener.listen();
    for (const auto& load : loads)
    {
        EXPECT_FALSE(TW_Loader::isLoading());
        m_listener.m_onMesh = [&]
        {
            EXPECT_TRUE(TW_Loader::isLoading());
            const auto& record = *static_cast<const MeshChunk*>(m_listener.m_records.back());
            if (record.name.size() > 1)
            {
                const S_String name = record.name;
                load();
                EXPECT_EQ(record.name, name) << "the record in hand stays as it is";
            }
        };
        writeMeshes("outer.tw", {"first", "second"});
        TW_Loader::load(outer, false);
        EXPECT_THAT(m_listener.take(), ElementsAre("first", "a", "b", "second", "a", "b")) << &load - loads;
        remove(outer);  // and is still in memory
        m_listener.m_onMesh = [] {};
        TW_Loader::load(outer, true);
        EXPECT_THAT(m_listener.take(), ElementsAre("first", "second")) << &load - loads;
    }

    // Three deep, the same file; what fails inside leaves the outer walks whole.
    writeMeshes("outer.tw", {"first", "second"});
    int depth = 0;
    m_listener.m_onMesh = [&]
    {
        if (++depth < 3)
        {
            TW_Loader::load(outer, true);
        }
        else if (depth == 3)
        {
            EXPECT_THROW(TW_Loader::load(m_directory.file("missing.tw"), true), S_FileException);
        }
    };
    TW_Loader::load(outer, true);
    EXPECT_THAT(m_listener.take(), ElementsAre("first", "first", "first", "second", "second", "second"));
    EXPECT_FALSE(TW_Loader::isLoading());
}

TEST_F(Loader, AFailureEndsTheWalkAndLeavesCallbacksAndFileAsTheyAre)
{
    const std::string file = writeMeshes("two.tw", {"first", "second"});
    m_listener.listen();
    const std::vector<const void*> callbacks = getCallbacks();
    m_listener.m_onMesh = [] { throw std::runtime_error("enough"); };
    EXPECT_THROW(TW_Loader::load(file, true), std::runtime_error);
    EXPECT_EQ(getCallbacks(), callbacks);
    m_listener.m_onMesh = [] {};
    remove(file);
    TW_Loader::load(file, false);
    EXPECT_THAT(m_listener.take(), ElementsAre("first", "first", "second"));
}

TEST_F(Loader, ACallbackMayChangeTheCallbacksForTheChunksAfterIt)
{
    const std::string file = writeMeshes("three.tw", {"first", "second", "third"});
    m_listener.listen();
    m_listener.m_onMesh = []
    {
        TW_Loader::pushState();
        TW_Loader::setMeshCallback(nullptr);
    };
    TW_Loader::load(file, true);
    TW_Loader::popState();
    EXPECT_THAT(m_listener.take(), ElementsAre("first"));
    EXPECT_EQ(TW_Loader::getMeshCallback(), &m_listener);
}

TEST_F(Loader, SavedCallbackSetsNestAndComeBackExactly)
{
    TW_Loader::popState();  // nothing was saved: nothing changes
    EXPECT_EQ(getCallbacks(), s_nobody);
    m_listener.listen();
    TW_Loader::setLightCallback(nullptr);
    const std::vector<const void*> outer = getCallbacks();
    TW_Loader::pushState();
    TW_Loader::clearAll();
    EXPECT_EQ(getCallbacks(), s_nobody);
    Listener inner;
    TW_Loader::setLightCallback(&inner);
    const std::vector<const void*> middle = getCallbacks();
    TW_Loader::pushState();
    TW_Loader::clearAll();
    TW_Loader::popState();
    EXPECT_EQ(getCallbacks(), middle);
    TW_Loader::popState();
    EXPECT_EQ(getCallbacks(), outer);
    TW_Loader::popState();
    EXPECT_EQ(getCallbacks(), outer);
}

// A half-saved set would come back shifted.
TEST_F(Loader, ASetIsSavedWholeOrNotAtAll)
{
    constexpr int depth = 20;
    m_listener.listen();
    const std::vector<const void*> listening = getCallbacks();
    for (int saved = 0; saved < depth; ++saved)
    {
        int failing = 0;
        for (bool isSaved = false; !isSaved; S_Memory::failAllocation(0))
        {
            S_Memory::failAllocation(++failing);
            try
            {
                TW_Loader::pushState();
                isSaved = true;
            }
            catch (const S_MemoryException_Allocation&)
            {
            }
        }
        TW_Loader::clearAll();
    }
    for (int left = depth - 1; left >= -1; --left)
    {
        TW_Loader::popState();
        EXPECT_EQ(getCallbacks(), left > 0 ? s_nobody : listening) << left;
    }
}

TEST_F(Loader, AnalysisListsTopLevelChunksAndTouchesNothingElse)
{
    S_MemoryFileWriter writer;
    support::writeEveryKind(writer);
    for (const unsigned int id : {0x10013u, 0x1001Au, 0x10006u, 0x77u})
    {
        support::writeChunk(writer, id, 3, 1);
    }
    const std::string cached = writeMeshes("cached.tw", {"cached"});
    TW_Loader::cacheFileForLoading(cached);
    remove(cached);
    const std::string file = m_directory.write("all.tw", writer.getBytes());
    m_listener.listen();
    support::VerboseCapture log;
    TW_Loader::analyze(file);
    EXPECT_THAT(m_listener.take(), ElementsAre());
    EXPECT_TRUE(log.getText().starts_with("Camera\n: size ")) << log.getText();
    const std::string kinds = std::regex_replace(log.take(), std::regex("\n: size [0-9]+, version [0-9]+\n"), ", ");
    EXPECT_EQ(kinds,
              "Camera, Point light, Directional light, Spot light, Material list, Mesh, Mesh, Keyframe animation, "
              "Environment, Helper, Point light animation, Directional light animation, Spot light animation, Node, "
              "Skin, Unknown, Unknown, Unknown, Unknown, ");
    TW_Loader::load(cached, true);
    EXPECT_THAT(m_listener.take(), ElementsAre("cached"));

    const std::string node = std::string("\0\0\1\0\2\0\0\0\3\0\0\0", 12) + "xyz";
    TW_Loader::analyze(m_directory.write("empty.tw", ""));
    EXPECT_EQ(log.take(), "");
    TW_Loader::analyze(m_directory.write("node.tw", node));
    EXPECT_EQ(log.take(), "Node\n: size 3, version 2\n");
    const std::string damaged = m_directory.write("damaged.tw", node + "short");
    EXPECT_THAT(support::messageOf([&] { TW_Loader::analyze(damaged); }), HasSubstr("top level, byte 15"));
    EXPECT_EQ(log.take(), "Node\n: size 3, version 2\n");
    EXPECT_THROW(TW_Loader::analyze(m_directory.file("missing.tw")), S_FileException);
}
