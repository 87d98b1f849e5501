#include "tests/support/expectations.h"
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
using Actor = support::ActingOnce;

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
    const support::NothingLeft check;
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
            const Actor actor(place, act);
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
        const Actor first(Actor::TEXTURE, act);
        frames.construct(*wanted.getDiffuseTexture());
        ASSERT_TRUE(frames.isConstructed()) << name;
        EXPECT_EQ(frames.getFrameCount(), 2u) << name;
        frames.destruct();
        const Actor second(Actor::TEXTURE, act);
        texture.construct(info);
        ASSERT_TRUE(texture.isConstructed()) << name;
        EXPECT_EQ(texture.getFilename(), "a.png") << name;
    }
}
