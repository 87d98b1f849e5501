#pragma once

#include "convert/clip_sampler.h"
#include "convert/model_reader.h"
#include "fuzz/input_file.h"
#include "fuzz/records.h"

#include <platform/runtime/exception.h>

#include <cstdint>
#include <cstring>

namespace fuzz
{
/// What a reader promises of every model that it returns: numbers of things that are there, parents before their
/// children, and clips that can be looked at at any time.
inline void requireWhole(const TW2::convert::Model& model)
{
    const auto isIn = [](int index, std::size_t count)
    { return index >= 0 && static_cast<std::size_t>(index) < count; };
    for (std::size_t i = 0; i < model.m_vecNodes.size(); ++i)
    {
        const TW2::convert::Node& node = model.m_vecNodes[i];
        require(node.m_iParent == -1 || isIn(node.m_iParent, i));
        for (const int mesh : node.m_vecMeshes)
        {
            require(isIn(mesh, model.m_vecMeshes.size()));
        }
    }
    for (const TW2::convert::Mesh& mesh : model.m_vecMeshes)
    {
        const std::size_t count = mesh.m_vecPositions.size();
        require(isIn(mesh.m_iMaterial, model.m_vecSurfaces.size()));
        require(mesh.m_vecNormals.size() == count && (mesh.m_vecColors.empty() || mesh.m_vecColors.size() == count));
        for (const auto& set : mesh.m_vecCoordinates)
        {
            require(set.empty() || set.size() == count);
        }
        for (const unsigned int index : mesh.m_vecIndices)
        {
            require(index < count);
        }
        for (const TW2::convert::Bone& bone : mesh.m_vecBones)
        {
            require(isIn(bone.m_iNode, model.m_vecNodes.size()));
            for (const auto& [vertex, weight] : bone.m_vecWeights)
            {
                require(vertex < count && weight > 0.0F);
            }
        }
    }
    for (const TW2::convert::Clip& clip : model.m_vecClips)
    {
        require(clip.m_dDuration >= 0.0);
        for (const TW2::convert::Channel& channel : clip.m_vecChannels)
        {
            require(isIn(channel.m_iNode, model.m_vecNodes.size()));
        }
        const TW2::convert::ClipSampler sampler(model, clip);
        for (const double part : {-0.5, 0.0, 0.3, 1.0, 1.7})
        {
            for (std::size_t node = 0; node < model.m_vecNodes.size(); ++node)
            {
                static_cast<void>(sampler.sample(node, part * clip.m_dDuration));
            }
        }
        for (std::size_t node = 0; node < model.m_vecNodes.size(); ++node)
        {
            static_cast<void>(sampler.findJumps(node));
        }
    }
}

/// Reads a model from bytes; damage is an error that names the file.
inline void readModel(InputFile& file, const std::uint8_t* data, std::size_t size)
{
    file.write(data, size);
    try
    {
        requireWhole(TW2::convert::readModel(file.getName(), {}));
    }
    catch (const S_Exception& exception)
    {
        require(std::strstr(exception.getErrorMessage(), file.getName().c_str()) != nullptr);
    }
}
}  // namespace fuzz
