#pragma once

#include <tw2/material/material.h>
#include <tw2/material/material_callback.h>
#include <tw2/material/texture.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_callbacks.h>

#include <functional>
#include <utility>

namespace support
{
/// The callbacks of objects, materials and textures in one, installed during its life.
class LoadCallbacks : public TW2::TW_LoadMeshCallback,
                      public TW2::TW_MeshLoadedCallback,
                      public TW2::TW_MeshParentNotFoundCallback,
                      public TW2::TW_ObjectKeyframeAnimationCallback,
                      public TW2::TW_MaterialCallback,
                      public TW2::TW_TextureCallback
{
public:
    /// Where a host is called during a load.
    enum Place
    {
        MATERIAL_COUNTS,
        MATERIAL,
        MESH,
        PARENT_NOT_FOUND,
        MESH_LOADED,
        TRACK,
        PLACES,  ///< of objects without textures
        TEXTURE
    };

    LoadCallbacks()
    {
        TW2::TW_ObjectAnimation::setLoadMeshCallback(this);
        TW2::TW_ObjectAnimation::setMeshLoadedCallback(this);
        TW2::TW_ObjectAnimation::setMeshParentNotFoundCallback(this);
        TW2::TW_ObjectAnimation::setKeyframeAnimationCallback(this);
        TW2::TW_Material::setCallback(this);
        TW2::TW_Texture::setCallback(this);
    }
    ~LoadCallbacks() override
    {
        TW2::TW_ObjectAnimation::setLoadMeshCallback(nullptr);
        TW2::TW_ObjectAnimation::setMeshLoadedCallback(nullptr);
        TW2::TW_ObjectAnimation::setMeshParentNotFoundCallback(nullptr);
        TW2::TW_ObjectAnimation::setKeyframeAnimationCallback(nullptr);
        TW2::TW_Material::setCallback(nullptr);
        TW2::TW_Texture::setCallback(nullptr);
    }
    LoadCallbacks(const LoadCallbacks&) = delete;
    LoadCallbacks& operator=(const LoadCallbacks&) = delete;

    bool operator()(TW2::MeshChunk& record) final
    {
        act(MESH);
        return take(record);
    }
    void operator()(TW2::TW_ObjectAnimation*, P_VirtualObject*) override { act(MESH_LOADED); }
    void operator()(P_VirtualObject*, const S_String&) override { act(PARENT_NOT_FOUND); }
    void operator()(int, TW2::TW_KeyframeAnimation*) final { act(TRACK); }
    void operator()(P_Material*, const TW2::TWMaterialChunk&) final { act(MATERIAL); }
    void operator()(int&, int&, const TW2::TWMaterialChunk&) final { act(MATERIAL_COUNTS); }
    void operator()(P_Map*, const TW2::TW_Texture::CreateInfo&) final { act(TEXTURE); }

protected:
    /// At every call.
    virtual void act(Place place) = 0;
    /// Whether a mesh is wanted; may change its record.
    virtual bool take(TW2::MeshChunk&) { return true; }
};

/// Does something once: at the `countdown`th call at a place.
class ActingOnce : public LoadCallbacks
{
public:
    ActingOnce(Place place, std::function<void()> action, int countdown = 1)
        : m_place(place), m_action(std::move(action)), m_iCountdown(countdown)
    {
    }

private:
    void act(Place place) override
    {
        if (place == m_place && m_iCountdown > 0 && --m_iCountdown == 0)
        {
            m_action();
        }
    }

    Place m_place;
    std::function<void()> m_action;
    int m_iCountdown;
};
}  // namespace support
