#include "viewer/reaching.h"

#include "viewer/failure.h"
#include "viewer/loaded_object.h"

#include <tw2/motion/reaching.h>
#include <tw2/object/object_animation.h>

#include <platform/scene/virtual_object.h>

#include <array>
#include <string>

namespace TW2::viewer
{
Reaching::Reaching() = default;
Reaching::~Reaching() = default;

void Reaching::start(LoadedObject& object, Kind kind, int bone, int bones)
{
    constexpr std::array<int, 4> usual{0, 2, 3, 5};
    const int wanted = bones > 0 ? bones : usual[static_cast<std::size_t>(kind)];
    const std::vector<LoadedObject::Bone>& all = object.getBones();
    auto base = static_cast<std::size_t>(bone);
    int count = 1;
    while (count < wanted && all[base].m_iParent >= 0)
    {
        base = static_cast<std::size_t>(all[base].m_iParent);
        ++count;
    }
    const int least = kind == Kind::TwoBones ? 3 : kind == Kind::Chain ? 2 : 1;
    const std::string& tip = all[static_cast<std::size_t>(bone)].m_strName;
    if (count < least)
    {
        throw Failure("\"" + tip + "\" has " + std::to_string(count - 1) + " bones above it; to reach it needs " +
                      std::to_string(least - 1));
    }
    m_pChain = std::make_unique<TW_BoneChain>(object.getObject(), all[base].m_strName.c_str(), tip.c_str());
    m_eKind = kind;
    m_iBone = bone;
    m_target.reset();
    if (kind != Kind::Look)
    {
        const P_VirtualObject* mesh = object.getSkeleton().getMesh(static_cast<unsigned int>(bone));
        m_target = mesh->getObjectToWorldMatrix().getTranslation();
    }
}

void Reaching::stop() noexcept
{
    m_eKind = Kind::None;
    m_iBone = -1;
    m_pChain.reset();
    m_target.reset();
}

void Reaching::apply(const Vector& eye)
{
    const Vector target = m_target.value_or(eye);
    switch (m_eKind)
    {
        case Kind::Look:
            m_pChain->aim({.target = target, .forward = m_vForward});
            break;
        case Kind::TwoBones:
            m_pChain->reachTwoBones({.target = target});
            break;
        case Kind::Chain:
            m_pChain->reach({.target = target});
            break;
        case Kind::None:
            break;
    }
}
}  // namespace TW2::viewer
