#include "core/unit_init.h"
#include "io/loader_state_guard.h"
#include "object/keyframe_animation_reference.h"
#include "object/object_animation_builder.h"
#include "object/object_animation_keyframe_callback.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/loader.h>

#include <platform/runtime/file.h>
#include <platform/runtime/memory_scope.h>
#include <platform/runtime/script.h>

#include <algorithm>

namespace TW2
{
/// Empty records at the end of an object's list, filled one after the other. Those that are not complete when the
/// scope ends are taken back.
class TW_ObjectAnimation::Builder::Records
{
public:
    Records(TW_ObjectAnimation& object, std::size_t count)
        : m_object(object), m_uiComplete(object.m_vecAnimations.size()), m_uiEnd(m_uiComplete + count)
    {
        object.m_vecAnimations.resize(m_uiEnd);
    }
    ~Records()
    {
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
        m_object.m_vecAnimations[m_uiComplete].m_iInstance = ++ObjectAnimation::s_instanceCnt;
        m_object.m_iMaximumAnimationIndex = std::max(m_object.m_iMaximumAnimationIndex, index);
        m_iIndex = index;
        m_bOpen = true;
    }
    /// Keeps the record that was opened last.
    void close() noexcept
    {
        ++m_uiComplete;
        m_bOpen = false;
    }

private:
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
    Records records(m_object, count);
    const LoaderStateGuard loaderState;
    const CachedFileGuard cachedFile;
    TW_ObjectAnimationKeyframeCallback callback(&script, &m_object, withVisibility);
    TW_Loader::setKeyframeAnimationCallback(&callback);

    S_Set<int> indices;
    for (unsigned int i = 0; i < count; ++i)
    {
        const AnimationParameters parameters = parseAnimation(script, i);
        if (!indices.insert(parameters.m_iIndex).second)
        {
            throw TW_Exception_DuplicateAnimationIndicesFound(script.getScriptName(), parameters.m_iIndex);
        }
        records.open(parameters.m_iIndex);
        loadAnimationFile(parameters, callback);
        records.close();
    }
}

void TW_ObjectAnimation::Builder::loadAnimation(int index, const S_String& fileName, bool withVisibility)
{
    Records records(m_object, 1);
    const LoaderStateGuard loaderState;
    const CachedFileGuard cachedFile;
    TW_ObjectAnimationKeyframeCallback callback(nullptr, &m_object, withVisibility);
    TW_Loader::setKeyframeAnimationCallback(&callback);
    records.open(index);
    loadAnimationFile({index, fileName}, callback);
    records.close();
}

/// The full path tells files of one name in different directories apart in the loader's memory.
void TW_ObjectAnimation::Builder::loadAnimationFile(const AnimationParameters& parameters,
                                                    TW_ObjectAnimationKeyframeCallback& callback)
{
    const S_DirectoryGuard directory;
    const S_String fileName = File.getFullPathName(parameters.m_strFileName);
    File.changeDirectory(File.getPath(fileName));
    callback.setIndex(parameters.m_iIndex);
    TW_Loader::load(fileName, false);
}

void TW_ObjectAnimation::appendAnimations(const char* scriptFileName, const char* blockName, bool withVisibility)
{
    S_Script script(scriptFileName);
    appendAnimations(&script, blockName, withVisibility);
}

void TW_ObjectAnimation::appendAnimations(S_Script* script, const char* blockName, bool withVisibility)
{
    const S_MemoryScope memory("TW Memory Container");
    const S_ScriptLockGuard lock(*script);
    lockAnimationBlock(*script, blockName);
    Builder(*this).loadAnimations(*script, withVisibility);
}

void TW_ObjectAnimation::appendAnimations(S_Script* script, int blockIndex, bool withVisibility)
{
    const S_MemoryScope memory("TW Memory Container");
    const S_ScriptLockGuard lock(*script);
    lockAnimationBlock(*script, blockIndex);
    Builder(*this).loadAnimations(*script, withVisibility);
}

void TW_ObjectAnimation::appendSingleAnimation(int index, const S_String& fileName, bool withVisibility)
{
    const S_MemoryScope memory("TW Memory Container");
    Builder(*this).loadAnimation(index, fileName, withVisibility);
}
}  // namespace TW2
