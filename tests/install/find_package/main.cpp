#include <tw2/core/exceptions.h>
#include <tw2/io/loader_callbacks.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/version.h>

#include <platform/math/matrix4x3.h>
#include <platform/scene/scene.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <cstdio>
#include <cstring>
#include <string>

static_assert(TW2::s_version >= 10000 && TW2_VERSION_MAJOR == TW2::s_version / 10000);

namespace
{
// A class with virtual operations that is derived from one of the library's.
class Lamps : public TW2::TW_LightCallback
{
public:
    using TW2::TW_LightCallback::operator();
    void operator()(const TW2::PointLightChunk&) override { ++m_iHeard; }
    int m_iHeard = 0;
};

// A mesh of the host's own, whose class the engine does not know and asks for.
class Door : public P_VirtualObject
{
public:
    Door() { enable(false); }
    int m_iFrames = 0;

private:
    bool executeAlways() override
    {
        ++m_iFrames;
        return P_VirtualObject::executeAlways();
    }
};

bool isCalledEveryFrame(Door& door)
{
    P_TransformBlock block;
    block.append(door);
    P_Scene scene;
    door.addTo(&scene);
    scene.executeFrame();
    P_VirtualObject copy;
    copy.duplicate(door);
    return door.m_iFrames == 1 && !copy.isEnabled();
}

bool complainsOf(const S_Exception& exception, const char* name)
{
    std::puts(exception.what());
    return std::strstr(exception.getErrorMessage(), name) != nullptr;
}
}  // namespace

// Uses both libraries through their installed headers: exceptions of the library, thrown here and there, are caught as
// the platform's class. Built with and without RTTI.
int main()
{
    const auto there = M_Matrix4x3Template<float>::translation({1.0F, 2.0F, 3.0F});
    if ((there * there).getTranslation().z != 6.0F || Lamps().m_iHeard != 0)
    {
        return 1;
    }
    Door door;
    if (!isCalledEveryFrame(door))
    {
        return 1;
    }
    bool caught = false;
    try
    {
        throw TW2::TW_Exception_TextureNotFound("wood.png");
    }
    catch (const S_Exception& exception)
    {
        caught = complainsOf(exception, "wood.png");
    }
    try
    {
        const TW2::TW_KeyframeAnimation animation(std::string("nowhere.tw"));
        return 1;
    }
    catch (const TW2::TW_Exception&)
    {
        return 1;
    }
    catch (const S_FileException& exception)
    {
        return caught && complainsOf(exception, "nowhere.tw") ? 0 : 1;
    }
}
