#pragma once

#include "tests/support/character_files.h"
#include "tests/support/load_callbacks.h"
#include "tests/support/records.h"

#include <tw2/tw2.h>

#include <platform/runtime/memory_file_writer.h>
#include <platform/runtime/rollback.h>
#include <platform/scene/virtual_object.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>

// What the sequences of calls are made of: choices from bytes, files to build from, callbacks that load and throw.
namespace calls
{
using namespace TW2;

inline void require(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}

/// The bytes of an input, one after the other; zeros behind the last.
class Choices
{
public:
    Choices(const std::uint8_t* data, std::size_t size) : m_pData(data), m_uLeft(size) {}

    [[nodiscard]] bool isAtEnd() const { return m_uLeft == 0; }
    int below(int limit)
    {
        if (m_uLeft == 0)
        {
            return 0;
        }
        --m_uLeft;
        return *m_pData++ % limit;
    }
    bool flip() { return below(2) == 1; }
    void callOneOf(std::initializer_list<std::function<void()>> calls)
    {
        calls.begin()[below(static_cast<int>(calls.size()))]();
    }
    float number() { return static_cast<float>(below(256) - 64) / 8.0F; }

private:
    const std::uint8_t* m_pData;
    std::size_t m_uLeft;
};

/// The files that everything is built from.
struct Files
{
    Files()
    {
        m_files.m_materials.materials = {support::makeSolidMaterial("material0"),
                                         support::makeSolidMaterial("material1")};
        KeyframeAnimationChunk blink = m_files.m_animations[0][0];
        blink.header.targetName = "body";
        blink.visibilityKeys = {{0, 1.0F}, {10, -1.0F}};
        m_files.m_skinBlocks = "animation { index 0 filename \"" +
                               m_files.getDirectory().write("blink.tw", support::toBytes(blink)) + "\" }";
        m_script = m_files.write();
        m_moves = m_files.getDirectory().write(
            "moves.txt", "moves { animation { index 1 filename \"" + file("animation1.tw") +
                             "\" } animation { index 7 filename \"" + file("animation0.tw") + "\" } }");
    }
    [[nodiscard]] std::string file(const char* name) const { return m_files.getDirectory().file(name); }

    support::CharacterFiles m_files{{4, 9, 2, 2, 8}};
    std::string m_script;
    std::string m_moves;
};

/// Loads, throws and calls whatever else a host may call inside other loads, as it is told.
class Callbacks : public support::LoadCallbacks
{
public:
    Callbacks(const Files& files, Choices& choices, std::function<void()> call)
        : m_files(files), m_choices(choices), m_call(std::move(call))
    {
    }

    int m_iLoadAt = 0;  ///< counted down at every call, as are the next two
    int m_iThrowAt = 0;
    int m_iCallAt = 0;
    int m_iChange = 0;  ///< what is done to the records of meshes

private:
    bool take(MeshChunk& record) override
    {
        switch (m_bInner ? -1 : m_iChange)
        {
            case 1:
                return m_choices.flip();
            case 2:
                record.hasParent = m_choices.flip();
                record.parentName = "nowhere";
                return true;
            case 3:
                record.hasInstance = m_choices.below(4) == 0;
                record.instanceOf = "Bone0";
                return true;
            default:
                return true;
        }
    }

    void act(Place) override
    {
        if (m_iThrowAt > 0 && --m_iThrowAt == 0)
        {
            throw std::runtime_error("thrown by a callback");
        }
        if (m_iCallAt > 0 && --m_iCallAt == 0)
        {
            m_iCallAt = m_choices.below(4);
            m_call();
        }
        if (m_iLoadAt > 0 && --m_iLoadAt == 0)
        {
            const bool outer = std::exchange(m_bInner, true);
            const S_Rollback restore([this, outer]() noexcept { m_bInner = outer; });
            const TW_VertexAnimation inner(m_files.m_script.c_str(), "skeleton", "skin");
            require(inner.getTotalMeshes() == 4, "a load inside a load is complete");
        }
    }

    const Files& m_files;
    Choices& m_choices;
    std::function<void()> m_call;
    bool m_bInner = false;
};
}  // namespace calls
