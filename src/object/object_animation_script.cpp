#include "object/object_animation_script.h"

#include <tw2/core/exceptions.h>

namespace TW2
{
namespace
{
constexpr int unlimited = -1;

void checkNamedBlock(const S_Script& script, const char* blockName, int minimum, int maximum)
{
    const S_Script::Blocks blocks[] = {{blockName, minimum, maximum}, {nullptr, 0, 0}};
    script.blockCheck(blocks, false);
}
}  // namespace

const S_Script::Blocks s_objectBlocks[] = {{"geometry", 1, 1}, {"animation", 0, unlimited}, {nullptr, 0, 0}};
const S_Script::Blocks s_animationBlocks[] = {{"animation", 0, unlimited}, {nullptr, 0, 0}};

bool GeometryParameters::isBoxAutomatic() const noexcept
{
    const M_Vector3Template<float> automatic(-1.0f, -1.0f, -1.0f);
    return m_vBoundingBoxMin == automatic && m_vBoundingBoxMax == automatic;
}

GeometryParameters parseGeometry(const S_Script& script)
{
    GeometryParameters p;
    const S_Script::Variables keys[] = {{"exportdata", S_Script::t_string, &p.m_strExportData, nullptr},
                                        {"skindata", S_Script::t_string, &p.m_strSkinData, ""},
                                        {"crossmode", S_Script::t_string, &p.m_strCrossMode, "normalized"},
                                        {"distance", S_Script::t_float, &p.m_fDistance, "0.0"},
                                        {"enableBoundingBox", S_Script::t_int, &p.m_iEnableBoundingBox, "1"},
                                        {"boundingBoxMin", S_Script::t_float3, &p.m_vBoundingBoxMin, "(-1,-1,-1)"},
                                        {"boundingBoxMax", S_Script::t_float3, &p.m_vBoundingBoxMax, "(-1,-1,-1)"},
                                        {"enableBoundingSphere", S_Script::t_int, &p.m_iEnableBoundingSphere, "1"},
                                        {"boundingSphereRadius", S_Script::t_float, &p.m_fBoundingSphereRadius, "-1"},
                                        {nullptr, S_Script::t_string, nullptr, nullptr}};
    script.parse(keys, "geometry", 0, true);
    return p;
}

AnimationParameters parseAnimation(const S_Script& script, unsigned int occurrence)
{
    AnimationParameters p;
    const S_Script::Variables keys[] = {{"index", S_Script::t_int, &p.m_iIndex, nullptr},
                                        {"filename", S_Script::t_string, &p.m_strFileName, nullptr},
                                        {nullptr, S_Script::t_string, nullptr, nullptr}};
    script.parse(keys, "animation", occurrence, true);
    return p;
}

InterpolationMode parseCrossMode(const S_Script& script, const S_String& crossMode)
{
    if (crossMode == "linear")
    {
        return InterpolationMode::Linear;
    }
    if (crossMode == "normalized")
    {
        return InterpolationMode::Normalized;
    }
    if (crossMode == "orthonormalized")
    {
        return InterpolationMode::Orthonormalized;
    }
    throw TW_Exception_InvalidScriptParameter(
        script.staticNesting(),
        "\"CrossMode\" can only take values \"linear\", \"normalized\" and \"orthonormalized\"!");
}

void lockObjectBlock(S_Script& script, const char* blockName)
{
    checkNamedBlock(script, blockName, 1, 1);
    script.lock(blockName, 0);
    script.blockCheck(s_objectBlocks, true);
}

void lockObjectBlock(S_Script& script, int blockIndex)
{
    script.lock(static_cast<unsigned int>(blockIndex));
    script.blockCheck(s_objectBlocks, true);
}

void lockAnimationBlock(S_Script& script, const char* blockName)
{
    checkNamedBlock(script, blockName, 0, unlimited);
    script.lock(blockName, 0);
    script.blockCheck(s_animationBlocks, true);
}

void lockAnimationBlock(S_Script& script, int blockIndex)
{
    script.lock(static_cast<unsigned int>(blockIndex));
    script.blockCheck(s_animationBlocks, true);
}
}  // namespace TW2
