#include "tests/support/load_callbacks.h"
#include "tests/support/material_records.h"

#include <tw2/core/exceptions.h>
#include <tw2/material/material_callback.h>
#include <tw2/material/texture_animation.h>

#include <gtest/gtest.h>

#include <functional>
#include <utility>

using namespace TW2;

namespace
{
/// Calls `m_act` once, at one of the places at which a host is asked while a material is built.
class Actor : public support::LoadCallbacks, public TW_TextureCallback
{
public:
    static constexpr Place TEXTURE = PLACES;

    Actor() { TW_Texture::setCallback(this); }
    ~Actor() override { TW_Texture::setCallback(nullptr); }

    void actAt(Place place, std::function<void()> act)
    {
        m_place = place;
        m_act = std::move(act);
    }
    using LoadCallbacks::operator();
    void operator()(P_Map*, const TW_Texture::CreateInfo&) override { act(TEXTURE); }

private:
    void act(Place place) override
    {
        if (place == m_place && m_act)
        {
            std::exchange(m_act, nullptr)();
        }
    }

    Place m_place = TEXTURE;
    std::function<void()> m_act;
};

TWMaterialChunk makeRecord(const char* name, int shading, std::initializer_list<const char*> files)
{
    TWMaterialChunk record;
    record.name = name;
    record.shading = shading;
    support::fillTexture(record.accessDiffuseTexture(), name, files);
    return record;
}
}  // namespace

TEST(BuildingCallback, WhateverItDoesWithWhatIsBuiltTheCallInProgressDecides)
{
    support::TextureFolder folder;
    folder.add({"a.png", "b.png", "c.png"});
    const TWMaterialChunk wanted = makeRecord("wanted", 1, {"a.png", "b.png"});
    const TWMaterialChunk other = makeRecord("other", 2, {"c.png"});
    const std::string text = support::describe(TW_Material(wanted));
    const long long live = S_Memory::getLiveCount();
    {
        Actor actor;
        TW_Material material;
        const std::pair<const char*, std::function<void()>> acts[] = {
            {"nothing", [] {}},
            {"destruct", [&] { material.destruct(); }},
            {"build another", [&] { material.construct(other); }},
            {"copy another", [&] { material = TW_Material(other); }}};
        for (const auto& [name, act] : acts)
        {
            for (const Actor::Place place : {Actor::TEXTURE, Actor::MATERIAL_COUNTS, Actor::MATERIAL})
            {
                actor.actAt(place, act);
                material.construct(wanted);
                EXPECT_EQ(material.getName(), "wanted") << name << " at " << place;
                EXPECT_EQ(support::describe(material), text) << name << " at " << place;
            }
        }
        material.destruct();
        EXPECT_EQ(support::describe(TW_Material(wanted)), text) << "the templates are in order";

        TextureAnimation frames(*other.getDiffuseTexture());
        TW_Texture texture;
        TW_Texture::CreateInfo info;
        info.filename = "a.png";
        const std::pair<const char*, std::function<void()>> smallActs[] = {
            {"destruct",
             [&]
             {
                 frames.destruct();
                 texture.destruct();
             }},
            {"build another", [&]
             {
                 frames.construct(*other.getDiffuseTexture());
                 texture.construct({"", "b.png", "", 0, "", ""});
             }}};
        for (const auto& [name, act] : smallActs)
        {
            frames.destruct();
            texture.destruct();
            actor.actAt(Actor::TEXTURE, act);
            frames.construct(*wanted.getDiffuseTexture());
            ASSERT_TRUE(frames.isConstructed()) << name;
            EXPECT_EQ(frames.getFrameCount(), 2u) << name;
            frames.destruct();
            actor.actAt(Actor::TEXTURE, act);
            texture.construct(info);
            ASSERT_TRUE(texture.isConstructed()) << name;
            EXPECT_EQ(texture.getFilename(), "a.png") << name;
        }
    }
    EXPECT_EQ(S_Memory::getLiveCount(), live);
}
