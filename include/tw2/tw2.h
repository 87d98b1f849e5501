#pragma once

/// Everything of the library, and of the engine what a host uses it with: scene, context, camera, objects that it makes
/// itself, scripts and exceptions.

#include <tw2/core/exceptions.h>
#include <tw2/core/static_data.h>
#include <tw2/core/text.h>
#include <tw2/io/camera_chunk.h>
#include <tw2/io/chunk_id.h>
#include <tw2/io/chunk_kind.h>
#include <tw2/io/environment_chunk.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/light_chunks.h>
#include <tw2/io/loader.h>
#include <tw2/io/loader_callbacks.h>
#include <tw2/io/mesh_chunk.h>
#include <tw2/io/node_chunk.h>
#include <tw2/keyframe/animation_header.h>
#include <tw2/keyframe/interpolation_mode.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/keyframe/keyframe_matrix.h>
#include <tw2/keyframe/linearly_optimized_container.h>
#include <tw2/light/directional_light_animation.h>
#include <tw2/light/light_animation.h>
#include <tw2/light/light_animation_chunks.h>
#include <tw2/light/point_light_animation.h>
#include <tw2/light/spot_light_animation.h>
#include <tw2/lod/object_animation_lods.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/material/material.h>
#include <tw2/material/material_callback.h>
#include <tw2/material/material_chunk.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/material/material_manager.h>
#include <tw2/material/material_texture_chunk.h>
#include <tw2/material/texture.h>
#include <tw2/material/texture_animation.h>
#include <tw2/motion/motion.h>
#include <tw2/object/animation_description.h>
#include <tw2/object/bone_group_handle.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/forwarding_object.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_callbacks.h>
#include <tw2/object/object_animation_mesh_callback.h>
#include <tw2/object/object_animation_state.h>
#include <tw2/object/script_parameters.h>
#include <tw2/object/virtual_object.h>
#include <tw2/skin/skin_chunk.h>
#include <tw2/skin/skin_mesh_callback.h>
#include <tw2/skin/vertex_animation.h>
#include <tw2/version.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/script.h>
#include <platform/scene/context.h>
#include <platform/scene/virtual_object.h>

// An engine of the host's own need not have these. TW2_OWN_ENGINE comes with the target tw2::tw2 there: the folder of
// platform/ is in reach as well, and what it has of a scene is for its own classes.
#if !defined(TW2_OWN_ENGINE) && __has_include(<platform/scene/scene.h>)
#include <platform/scene/camera.h>
#include <platform/scene/scene.h>
#endif
