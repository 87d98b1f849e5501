#include "object/object_animation_builder.h"

#include <tw2/material/material_manager.h>

#include <platform/runtime/memory_scope.h>
#include <platform/runtime/script.h>
#include <platform/runtime/str.h>

#include <memory>
#include <utility>

namespace TW2
{
namespace
{
constexpr const char* memoryScopeName = "TW Memory Container";

/// Leaves an object unconstructed when the scope ends before `keep`.
class ConstructionGuard
{
public:
    explicit ConstructionGuard(TW_ObjectAnimation& object) noexcept : m_pObject(&object) {}
    ~ConstructionGuard()
    {
        if (m_pObject)
        {
            m_pObject->destruct();
        }
    }
    ConstructionGuard(const ConstructionGuard&) = delete;
    ConstructionGuard& operator=(const ConstructionGuard&) = delete;

    void keep() noexcept { m_pObject = nullptr; }

private:
    TW_ObjectAnimation* m_pObject;
};
}  // namespace

TW_ObjectAnimation::TW_ObjectAnimation()
{
    initializeMembers();
}

TW_ObjectAnimation::TW_ObjectAnimation(const char* scriptFileName, const char* blockName, TW_MeshCallback* meshCallback,
                                       bool withVisibility)
    : TW_ObjectAnimation()
{
    construct(scriptFileName, blockName, meshCallback, withVisibility);
}

TW_ObjectAnimation::TW_ObjectAnimation(S_Script* script, const char* blockName, TW_MeshCallback* meshCallback,
                                       bool withVisibility)
    : TW_ObjectAnimation()
{
    construct(script, blockName, meshCallback, withVisibility);
}

TW_ObjectAnimation::TW_ObjectAnimation(S_Script* script, int blockIndex, TW_MeshCallback* meshCallback,
                                       bool withVisibility)
    : TW_ObjectAnimation()
{
    construct(script, blockIndex, meshCallback, withVisibility);
}

TW_ObjectAnimation::TW_ObjectAnimation(const TW_ObjectAnimation& source) : TW_ObjectAnimation()
{
    construct(source, false, nullptr);
}

TW_ObjectAnimation& TW_ObjectAnimation::operator=(const TW_ObjectAnimation& source)
{
    if (this != &source)
    {
        construct(source, false, nullptr);
    }
    return *this;
}

void TW_ObjectAnimation::construct(const char* scriptFileName, const char* blockName, TW_MeshCallback* meshCallback,
                                   bool withVisibility)
{
    destruct();
    S_Script script(scriptFileName);
    construct(&script, blockName, meshCallback, withVisibility);
}

void TW_ObjectAnimation::construct(S_Script* script, const char* blockName, TW_MeshCallback* meshCallback,
                                   bool withVisibility)
{
    destruct();
    const S_MemoryScope memory(memoryScopeName);
    ConstructionGuard guard(*this);
    m_bConstructed = true;
    setName(S_STR("%s, %s", script->staticNesting(), blockName));
    const S_ScriptLockGuard lock(*script);
    lockObjectBlock(*script, blockName);
    Builder(*this).build(*script, meshCallback, withVisibility);
    guard.keep();
}

void TW_ObjectAnimation::construct(S_Script* script, int blockIndex, TW_MeshCallback* meshCallback, bool withVisibility)
{
    destruct();
    const S_MemoryScope memory(memoryScopeName);
    ConstructionGuard guard(*this);
    m_bConstructed = true;
    setName(S_STR("%s, %s", script->staticNesting(), script->getBlockName(static_cast<unsigned int>(blockIndex))));
    const S_ScriptLockGuard lock(*script);
    lockObjectBlock(*script, blockIndex);
    Builder(*this).build(*script, meshCallback, withVisibility);
    guard.keep();
}

void TW_ObjectAnimation::construct(const TW_ObjectAnimation& source, bool deepCopy, TW_MaterialManager* materials)
{
    if (&source == this)
    {
        return;
    }
    // The object's own manager may be the one to copy from: it lives until that is done.
    const std::unique_ptr<TW_MaterialManager> previousManager(std::exchange(m_pMaterialManager, nullptr));
    destruct();
    if (!source.m_bConstructed && source.m_vecMeshes.empty())
    {
        return;
    }
    const S_MemoryScope memory(memoryScopeName);
    ConstructionGuard guard(*this);
    m_bConstructed = true;
    Builder(*this).copy(source, deepCopy, materials ? materials : source.m_pMaterialManager);
    guard.keep();
}

void TW_ObjectAnimation::Builder::build(S_Script& script, TW_MeshCallback* meshCallback, bool withVisibility)
{
    loadGeometry(script, meshCallback);
    loadAnimations(script, withVisibility);
}
}  // namespace TW2
