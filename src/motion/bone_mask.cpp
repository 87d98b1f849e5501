#include "motion/bone_tree.h"

#include <tw2/core/exceptions.h>
#include <tw2/motion/bone_mask.h>
#include <tw2/object/bone_group_handle.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/hash_map.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <string_view>

namespace TW2
{
namespace
{
std::uint32_t hashName(const S_String& name)
{
    return static_cast<std::uint32_t>(S_CaselessNameHash()(name));
}

bool fits(std::string_view pattern, std::string_view name)
{
    if (pattern.empty())
    {
        return name.empty();
    }
    if (pattern.front() == '*')
    {
        // Several stars in a row are one; then the rest is looked for at every place.
        pattern.remove_prefix(1);
        for (std::size_t skipped = 0; skipped <= name.size(); ++skipped)
        {
            if (fits(pattern, name.substr(skipped)))
            {
                return true;
            }
        }
        return false;
    }
    const bool same =
        !name.empty() && (pattern.front() == '?' || toLowerCase(pattern.front()) == toLowerCase(name.front()));
    return same && fits(pattern.substr(1), name.substr(1));
}

bool fitsAny(std::string_view patterns, std::string_view name)
{
    for (;;)
    {
        const std::size_t bar = patterns.find('|');
        if (fits(patterns.substr(0, bar), name))
        {
            return true;
        }
        if (bar == std::string_view::npos)
        {
            return false;
        }
        patterns.remove_prefix(bar + 1);
    }
}
}  // namespace

template <typename WeightOf>
void TW_BoneMask::fill(const TW_VirtualObject& object, const WeightOf& weightOf)
{
    for (std::size_t part = 0; part < m_vecParts.size(); ++part)
    {
        const TW_ObjectAnimation& played = *object.getPlayedObject(static_cast<unsigned int>(part));
        for (std::size_t bone = 0; bone < m_vecParts[part].size(); ++bone)
        {
            m_vecParts[part][bone].m_fWeight = weightOf(played, static_cast<unsigned int>(bone));
        }
    }
}

TW_BoneMask::TW_BoneMask(const TW_VirtualObject& object, float weight) : m_strObject(object.getName())
{
    for (unsigned int i = 0; const TW_ObjectAnimation* played = object.getPlayedObject(i); ++i)
    {
        Part& part = m_vecParts.emplace_back(played->getTotalMeshes());
        for (unsigned int bone = 0; bone < part.size(); ++bone)
        {
            part[bone] = {std::min(std::max(0.0F, weight), 1.0F), hashName(played->getMesh(bone)->getName())};
        }
    }
}

TW_BoneMask TW_BoneMask::ofGroup(const TW_VirtualObject& object, const TW_BoneGroupHandle& group)
{
    TW_BoneMask mask(object);
    mask.fill(object, [&group](const TW_ObjectAnimation& played, unsigned int bone)
              { return group.hasMesh(played.getMesh(bone)) ? 1.0F : 0.0F; });
    return mask;
}

TW_BoneMask TW_BoneMask::below(const TW_VirtualObject& object, const char* bone, unsigned int falloff)
{
    TW_BoneMask mask(object);
    mask.fill(object,
              [&](const TW_ObjectAnimation& played, unsigned int b)
              {
                  const unsigned int top = findBone(played, bone);
                  const int depth = getDepthBelow(played, b, top);
                  return depth < 0 ? 0.0F
                                   : std::min(1.0F, static_cast<float>(depth + 1) / (static_cast<float>(falloff) + 1));
              });
    return mask;
}

TW_BoneMask TW_BoneMask::matching(const TW_VirtualObject& object, const char* patterns)
{
    TW_BoneMask mask(object);
    mask.fill(object, [&](const TW_ObjectAnimation& played, unsigned int bone)
              { return fitsAny(patterns, played.getMesh(bone)->getName()) ? 1.0F : 0.0F; });
    return mask;
}

TW_BoneMask TW_BoneMask::movedBy(const TW_VirtualObject& object, int animation)
{
    TW_BoneMask mask(object);
    mask.fill(object,
              [animation](const TW_ObjectAnimation& played, unsigned int bone)
              {
                  const TW_ObjectAnimation::ObjectAnimation* const record = played.getAnimation(animation);
                  return record && bone < record->m_vecKeyframeAnimations.size() &&
                                 record->m_vecKeyframeAnimations[bone]
                             ? 1.0F
                             : 0.0F;
              });
    return mask;
}

TW_BoneMask TW_BoneMask::complement() const
{
    TW_BoneMask result(*this);
    for (Part& part : result.m_vecParts)
    {
        for (Bone& bone : part)
        {
            bone.m_fWeight = 1.0F - bone.m_fWeight;
        }
    }
    return result;
}

TW_BoneMask& TW_BoneMask::operator*=(const TW_BoneMask& other)
{
    const auto same = [](const Part& a, const Part& b)
    {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [](const Bone& x, const Bone& y) { return x.m_uName == y.m_uName; });
    };
    if (!std::equal(m_vecParts.begin(), m_vecParts.end(), other.m_vecParts.begin(), other.m_vecParts.end(), same))
    {
        throw TW_Exception_BoneMaskMismatch(other.m_strObject.c_str(), other.getBoneCount(), m_strObject.c_str(),
                                            getBoneCount());
    }
    for (std::size_t part = 0; part < m_vecParts.size(); ++part)
    {
        for (std::size_t bone = 0; bone < m_vecParts[part].size(); ++bone)
        {
            m_vecParts[part][bone].m_fWeight *= other.m_vecParts[part][bone].m_fWeight;
        }
    }
    return *this;
}

unsigned int TW_BoneMask::getBoneCount(unsigned int part) const noexcept
{
    return part < m_vecParts.size() ? static_cast<unsigned int>(m_vecParts[part].size()) : 0;
}

float TW_BoneMask::getWeight(unsigned int part, unsigned int bone) const noexcept
{
    return bone < getBoneCount(part) ? m_vecParts[part][bone].m_fWeight : 0.0F;
}

void TW_BoneMask::setWeight(unsigned int bone, float weight)
{
    if (bone >= getBoneCount())
    {
        return;
    }
    const std::uint32_t name = m_vecParts[0][bone].m_uName;
    for (std::size_t part = 0; part < m_vecParts.size(); ++part)
    {
        for (std::size_t b = 0; b < m_vecParts[part].size(); ++b)
        {
            if (part == 0 ? b == bone : m_vecParts[part][b].m_uName == name)
            {
                m_vecParts[part][b].m_fWeight = std::min(std::max(0.0F, weight), 1.0F);
            }
        }
    }
}

void TW_BoneMask::checkFits(const TW_VirtualObject& object) const
{
    bool fitting = !object.getPlayedObject(static_cast<unsigned int>(m_vecParts.size()));
    for (unsigned int part = 0; fitting && part < m_vecParts.size(); ++part)
    {
        const TW_ObjectAnimation* const played = object.getPlayedObject(part);
        fitting = played && played->getTotalMeshes() == m_vecParts[part].size();
        for (unsigned int bone = 0; fitting && bone < m_vecParts[part].size(); ++bone)
        {
            fitting = hashName(played->getMesh(bone)->getName()) == m_vecParts[part][bone].m_uName;
        }
    }
    if (!fitting)
    {
        const TW_ObjectAnimation* const played = object.getPlayedObject(0);
        throw TW_Exception_BoneMaskMismatch(m_strObject.c_str(), getBoneCount(), object.getName().c_str(),
                                            played ? played->getTotalMeshes() : 0);
    }
}
}  // namespace TW2
