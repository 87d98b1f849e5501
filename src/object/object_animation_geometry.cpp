#include "core/unit_init.h"
#include "io/loader_state_guard.h"
#include "object/object_animation_builder.h"
#include "object/object_animation_material_list_callback.h"

#include <tw2/io/loader.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/object_animation_mesh_callback.h>

#include <platform/runtime/file.h>
#include <platform/runtime/script.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace TW2
{
void TW_ObjectAnimation::Builder::loadGeometry(S_Script& script, TW_MeshCallback* meshCallback)
{
    const S_DirectoryGuard directory;
    const GeometryParameters parameters = parseGeometry(script);
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

void TW_ObjectAnimation::Builder::loadMaterials(const S_String& fileName)
{
    const LoaderStateGuard loaderState;
    TW_Loader::cacheFileForLoading(fileName);
    m_object.m_pMaterialManager = new TW_MaterialManager();
    TW_ObjectAnimationMaterialListCallback callback(m_object.m_pMaterialManager);
    TW_Loader::setMaterialListCallback(&callback);
    TW_Loader::load(fileName, false);
}

/// The second walk over the file, with the callbacks that the caller of the construction has installed.
void TW_ObjectAnimation::Builder::loadMeshes(const S_String& fileName, TW_MeshCallback* meshCallback)
{
    std::optional<TW_ObjectAnimationMeshCallback> ownCallback;
    if (!meshCallback)
    {
        meshCallback = &ownCallback.emplace(&m_object);
    }
    m_object.m_bMeshTransformsDeferred = true;
    TW_MeshCallback* const previousCallback = TW_Loader::getMeshCallback();
    TW_Loader::setMeshCallback(meshCallback);
    try
    {
        TW_Loader::load(fileName, false);
    }
    catch (...)
    {
        TW_Loader::setMeshCallback(previousCallback);
        throw;
    }
    TW_Loader::setMeshCallback(nullptr);
    m_object.adoptMeshTransforms();
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
            std::max(m_object.m_vManualBoundingBoxMin.length(), m_object.m_vManualBoundingBoxMax.length());
    }
    else if (m_object.m_bUseManualBoundingSphere && !m_object.m_bUseManualBoundingBox)
    {
        const float side = m_object.m_fManualBoundingSphereRadius / std::sqrt(3.0f);
        m_object.m_vManualBoundingBoxMin = {-side, -side, -side};
        m_object.m_vManualBoundingBoxMax = {side, side, side};
    }
    m_object.setBoundingRadius(m_object.m_fManualBoundingSphereRadius);
    m_object.setBoundingBox(m_object.m_vManualBoundingBoxMin, m_object.m_vManualBoundingBoxMax);
}
}  // namespace TW2
