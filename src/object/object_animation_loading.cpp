#include "core/memory_scope.h"
#include "core/unit_init.h"
#include "core/with_hint.h"
#include "io/file_content.h"
#include "io/loader_state_guard.h"
#include "object/keyframe_animation_reference.h"
#include "object/object_animation_builder.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/loader.h>
#include <tw2/io/loader_callbacks.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_callbacks.h>
#include <tw2/object/object_animation_mesh_callback.h>

#include <platform/math/inverse_sqrt.h>
#include <platform/runtime/file.h>
#include <platform/runtime/rollback.h>
#include <platform/runtime/script.h>
#include <platform/runtime/str.h>
#include <platform/runtime/system.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

namespace TW2
{
namespace
{
/// A file's name without folders and the part from the last dot on.
S_String findStem(const S_String& fileName)
{
    const S_String name = File.getFilename(fileName);
    const std::size_t dot = name.rfind('.');
    return dot == 0 ? name : name.substr(0, dot);
}

TW_AnimationDescription makeDescription(const AnimationParameters& parameters,
                                        const TW_ObjectAnimation::ObjectAnimation& record, const char* place)
{
    TW_AnimationDescription description;
    description.m_strName = parameters.m_strName.empty() ? findStem(parameters.m_strFileName) : parameters.m_strName;
    const double end = record.getCourse().m_dEndFrame;
    for (const AnimationParameters::Event& event : parameters.m_vecEvents)
    {
        constexpr double rounding = 1e-3;  // of times that are written with few digits
        const double frame = static_cast<double>(event.m_fTime) * record.m_iFrameRate;
        if (!(frame >= 0.0 && frame <= end + rounding))
        {
            throw TW_Exception_InvalidScriptParameter(
                place,
                S_STR("event \"%s\" of animation \"%s\": expected a \"time\" from 0 to %g, the animation's "
                      "end in seconds, not %g",
                      event.m_strName.c_str(), description.m_strName.c_str(),
                      record.m_iFrameRate > 0 ? end / record.m_iFrameRate : 0.0, static_cast<double>(event.m_fTime)));
        }
        description.m_vecEvents.push_back({event.m_strName, std::min(frame, end)});
    }
    if (!parameters.m_strRootMotion.empty())
    {
        description.m_rootMotion.construct(parameters.m_strRootMotion);
        if (description.m_rootMotion.getTotalFrameCount() == 0)
        {
            throw TW_Exception_InvalidScriptParameter(
                place, S_STR("root motion file \"%s\" of animation \"%s\": expected at least one frame, found none",
                             parameters.m_strRootMotion.c_str(), description.m_strName.c_str()));
        }
    }
    std::stable_sort(description.m_vecEvents.begin(), description.m_vecEvents.end(),
                     [](const TW_AnimationEvent& a, const TW_AnimationEvent& b) { return a.m_dFrame < b.m_dFrame; });
    return description;
}

/// Throws for a file without meshes that is skin data or an animation.
void requireGeometry(const S_String& fileName)
{
    if (const S_String content = describeMistakenFile(fileName, CHUNK_MESH); !content.empty())
    {
        throw TW_Exception_InvalidGeometry(
            S_STR("file \"%s\" holds no geometry; it is %s", fileName.c_str(), content.c_str()));
    }
}

/// Throws for a file without animations that is skin data or geometry.
void requireAnimation(const S_String& fileName)
{
    if (const S_String content = describeMistakenFile(fileName, CHUNK_KEYFRAME_ANIMATION); !content.empty())
    {
        throw withHint(TW_Exception_NoAnimation(fileName.c_str()), S_STR("it is %s", content.c_str()));
    }
}
}  // namespace

void TW_ObjectAnimation::Builder::requireObject() const
{
    TW2::requireObject(hasObject());
}

/// @name Geometry
/// @{
void TW_ObjectAnimation::Builder::loadGeometry(S_Script& script, TW_MeshCallback* meshCallback)
{
    const S_DirectoryGuard directory;
    GeometryParameters parameters = parseGeometry(script);
    findFile(script, "geometry", 0, "exportdata", parameters.m_strExportData);
    if (!meshCallback && !parameters.m_strSkinData.empty())
    {
        Sys.verbose(
            "TW2: %s names skin data (line %u), which an object does without: its meshes follow no bones. A vertex "
            "animation takes them.\n",
            script.staticNesting(), script.getKeyLine("geometry", 0, "skindata"));
    }
    const S_String fileName = File.getFullPathName(parameters.m_strExportData);
    File.changeDirectory(File.getPath(fileName));
    {
        const CachedFileGuard cachedFile;
        loadMaterials(fileName);
        loadMeshes(fileName, meshCallback);
    }
    m_object.m_eCrossMode = parseCrossMode(script, parameters.m_strCrossMode);
    setBoundingVolumes(parameters);
}

/// The second walk over the file, with the callbacks that the caller of the construction has installed; inside another
/// load those are that load's, and see nothing of this one.
void TW_ObjectAnimation::Builder::loadMeshes(const S_String& fileName, TW_MeshCallback* meshCallback)
{
    std::optional<LoaderStateGuard> outerLoad;
    if (TW_Loader::isLoading())
    {
        outerLoad.emplace();
    }
    std::optional<TW_ObjectAnimationMeshCallback> ownCallback;
    if (!meshCallback)
    {
        meshCallback = &ownCallback.emplace(&m_object);
    }
    TW_MeshCallback* const previousCallback = TW_Loader::getMeshCallback();
    TW_Loader::setMeshCallback(meshCallback);
    S_Rollback rollback([previousCallback]() noexcept { TW_Loader::setMeshCallback(previousCallback); });
    TW_Loader::load(fileName, false);
    requireObject();
    if (m_object.m_vecMeshes.empty())
    {
        requireGeometry(fileName);
    }
    rollback.keep();
    TW_Loader::setMeshCallback(nullptr);
    m_object.m_meshTransforms.shrinkToFit();
}

void TW_ObjectAnimation::Builder::setBoundingVolumes(const GeometryParameters& parameters)
{
    m_object.m_vManualBoundingBoxMin = parameters.m_vBoundingBoxMin;
    m_object.m_vManualBoundingBoxMax = parameters.m_vBoundingBoxMax;
    m_object.m_fManualBoundingSphereRadius = parameters.m_fBoundingSphereRadius;

    const bool useBox = parameters.m_iEnableBoundingBox == 1;
    const bool useSphere = parameters.m_iEnableBoundingSphere == 1;
    m_object.m_bUseManualBoundingBox = useBox && !parameters.isBoxAutomatic();
    m_object.m_bUseManualBoundingSphere = useSphere && !parameters.isSphereAutomatic();
    const bool automatic = (useBox && parameters.isBoxAutomatic()) || (useSphere && parameters.isSphereAutomatic());

    m_object.setEngineFlag(FLAG_BOUNDING_BOX, useBox);
    m_object.setEngineFlag(FLAG_BOUNDING_SPHERE, useSphere);
    m_object.setEngineFlag(FLAG_AUTOMATIC_BOUNDING_VOLUME, automatic);
    m_object.setEngineFlag(FLAG_FIXED_BOUNDING_VOLUME, !automatic);
    if (!automatic)
    {
        setFixedBoundingVolumes();
    }
}

/// A volume that was not given follows from the other one.
void TW_ObjectAnimation::Builder::setFixedBoundingVolumes()
{
    if (m_object.m_bUseManualBoundingBox && !m_object.m_bUseManualBoundingSphere)
    {
        m_object.m_fManualBoundingSphereRadius =
            std::max(M_fastLength(m_object.m_vManualBoundingBoxMin), M_fastLength(m_object.m_vManualBoundingBoxMax));
    }
    else if (m_object.m_bUseManualBoundingSphere && !m_object.m_bUseManualBoundingBox)
    {
        const float side = m_object.m_fManualBoundingSphereRadius / std::sqrt(3.0F);
        m_object.m_vManualBoundingBoxMin = {-side, -side, -side};
        m_object.m_vManualBoundingBoxMax = {side, side, side};
    }
    m_object.setBoundingRadius(m_object.m_fManualBoundingSphereRadius);
    m_object.setBoundingBox(m_object.m_vManualBoundingBoxMin, m_object.m_vManualBoundingBoxMax);
}
/// @}

/// @name Animations
/// @{
/// Files the keyframe animations of an animation file under an index of an object.
class TW_ObjectAnimationKeyframeCallback : public TW_KeyframeAnimationCallback
{
public:
    /// `script` is named in complaints; null when there is none.
    TW_ObjectAnimationKeyframeCallback(const S_Script* script, TW_ObjectAnimation* object, int index,
                                       bool withVisibility) noexcept
        : m_pScript(script), m_pObject(object), m_iIndex(index), m_bWithVisibility(withVisibility)
    {
    }

    /// Throws TW_Exception_AnimationTargetNotFound when the target is no mesh of the object and no host callback takes
    /// such animations.
    void operator()(KeyframeAnimationChunk& record) override
    {
        auto* const animation = new TW_KeyframeAnimation(record, m_bWithVisibility);
        const S_Rollback drop([animation]() noexcept { dropReference(animation); });
        const char* target = record.header.targetName.c_str();
        if (m_pObject->insertAnimation(target, m_iIndex, animation))
        {
            return;
        }
        TW_ObjectKeyframeAnimationCallback* callback = TW_ObjectAnimation::getKeyframeAnimationCallback();
        if (!callback)
        {
            throw TW_Exception_AnimationTargetNotFound(
                m_pScript ? m_pScript->staticNesting() : "<script not available>", S_STR("Target name \"%s\"", target));
        }
        (*callback)(m_iIndex, animation);
    }

private:
    const S_Script* m_pScript;
    TW_ObjectAnimation* m_pObject;
    int m_iIndex;
    bool m_bWithVisibility;
};

/// Empty records at the end of an object's list, filled one after the other. Those that are not complete when the
/// scope ends are taken back.
class TW_ObjectAnimation::Builder::Records
{
public:
    Records(const Builder& builder, std::size_t count)
        : m_builder(builder),
          m_object(builder.m_object),
          m_uiComplete(m_object.m_vecAnimations.size()),
          m_uiEnd(m_uiComplete + count)
    {
        m_object.m_vecAnimations.resize(m_uiEnd);
    }
    ~Records()
    {
        if (!m_builder.hasObject())
        {
            return;
        }
        if (m_bOpen)
        {
            m_object.deleteAnimation(m_iIndex);
        }
        // A host's callback may have added records behind these; empty ones then stay.
        if (m_object.m_vecAnimations.size() == m_uiEnd)
        {
            m_object.m_vecAnimations.erase(m_object.m_vecAnimations.begin() + static_cast<std::ptrdiff_t>(m_uiComplete),
                                           m_object.m_vecAnimations.end());
        }
    }
    Records(const Records&) = delete;
    Records& operator=(const Records&) = delete;

    /// Makes the next record the object's animation `index`, still without tracks.
    void open(int index)
    {
        m_object.deleteAnimation(index);
        m_object.m_vecAnimations[m_uiComplete] = ObjectAnimation(static_cast<int>(m_object.getTotalMeshes()));
        m_object.m_mapAnimationIndices.emplace(index, static_cast<int>(m_uiComplete));
        m_object.m_vecAnimations[m_uiComplete].m_iIndex = index;
        m_object.m_vecAnimations[m_uiComplete].m_iInstance = ++ObjectAnimation::s_instanceCnt;
        m_object.m_iMaximumAnimationIndex = std::max(m_object.m_iMaximumAnimationIndex, index);
        m_iIndex = index;
        m_bOpen = true;
    }
    /// Keeps the record that was opened last.
    void close()
    {
        m_object.m_vecAnimations[m_uiComplete].m_vecKeyframeAnimations.pack();
        ++m_uiComplete;
        m_bOpen = false;
    }

private:
    const Builder& m_builder;
    TW_ObjectAnimation& m_object;
    std::size_t m_uiComplete;
    std::size_t m_uiEnd;
    int m_iIndex = 0;
    bool m_bOpen = false;
};

void TW_ObjectAnimation::Builder::loadAnimations(S_Script& script, bool withVisibility)
{
    const unsigned int count = script.count("animation");
    if (count == 0)
    {
        return;
    }
    const S_DirectoryListings listings;  // names that are looked for in the same folders
    Records records(*this, count);
    const LoaderStateGuard loaderState;
    const CachedFileGuard cachedFile;
    S_Set<int> indices;
    for (unsigned int i = 0; i < count; ++i)
    {
        AnimationParameters parameters = parseAnimation(script, i);
        if (!indices.insert(parameters.m_iIndex).second)
        {
            throw TW_Exception_DuplicateAnimationIndicesFound(script.getScriptName(), parameters.m_iIndex);
        }
        findFile(script, "animation", i, "filename", parameters.m_strFileName);
        findFile(script, "animation", i, "rootmotion", parameters.m_strRootMotion);
        fillRecord(records, parameters, &script, withVisibility);
    }
}

void TW_ObjectAnimation::Builder::loadAnimation(int index, const S_String& fileName, bool withVisibility)
{
    Records records(*this, 1);
    const LoaderStateGuard loaderState;
    const CachedFileGuard cachedFile;
    fillRecord(records, {index, fileName, {}, {}, {}}, nullptr, withVisibility);
}

/// The next record becomes the animation of these parameters, which come from `script` (null: from the host).
void TW_ObjectAnimation::Builder::fillRecord(Records& records, const AnimationParameters& parameters,
                                             const S_Script* script, bool withVisibility)
{
    records.open(parameters.m_iIndex);
    TW_ObjectAnimationKeyframeCallback callback(script, &m_object, parameters.m_iIndex, withVisibility);
    TW_Loader::setKeyframeAnimationCallback(&callback);
    loadAnimationFile(parameters);
    if (ObjectAnimation* const record =
            m_object.accessAnimation(parameters.m_iIndex))  // a callback may have deleted it
    {
        const char* const place = script ? script->staticNesting() : parameters.m_strFileName.c_str();
        record->m_pDescription = std::allocate_shared<TW_AnimationDescription>(
            S_Allocator<TW_AnimationDescription>(), makeDescription(parameters, *record, place));
    }
    records.close();
}

/// The full path tells files of one name in different directories apart in the loader's memory.
void TW_ObjectAnimation::Builder::loadAnimationFile(const AnimationParameters& parameters)
{
    const S_DirectoryGuard directory;
    const S_String fileName = File.getFullPathName(parameters.m_strFileName);
    File.changeDirectory(File.getPath(fileName));
    TW_Loader::load(fileName, false);
    requireObject();
    const ObjectAnimation* const record = m_object.getAnimation(parameters.m_iIndex);
    if (record && record->m_iKeyframeAnimationCount == 0)
    {
        requireAnimation(fileName);
    }
}

template <typename Block>
void TW_ObjectAnimation::Builder::append(S_Script& script, Block block, bool withVisibility)
{
    const MemoryScope memory;
    const S_ScriptLockGuard lock(script);
    lockBlock(script, block, BlockKind::Animations);
    loadAnimations(script, withVisibility);
}

void TW_ObjectAnimation::appendAnimations(const char* scriptFileName, const char* blockName, bool withVisibility)
{
    const MemoryScope memory;
    S_Script script(orEmpty(scriptFileName));
    appendAnimations(&script, blockName, withVisibility);
}

void TW_ObjectAnimation::appendAnimations(S_Script* script, const char* blockName, bool withVisibility)
{
    Builder(*this).append(requireScript(script), orEmpty(blockName), withVisibility);
}

void TW_ObjectAnimation::appendAnimations(S_Script* script, int blockIndex, bool withVisibility)
{
    Builder(*this).append(requireScript(script), blockIndex, withVisibility);
}

void TW_ObjectAnimation::appendSingleAnimation(int index, const S_String& fileName, bool withVisibility)
{
    const MemoryScope memory;
    Builder(*this).loadAnimation(index, fileName, withVisibility);
}
/// @}
}  // namespace TW2
