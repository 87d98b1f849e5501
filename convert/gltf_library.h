#pragma once

// tinygltf, which describes a glTF file. It reads neither pictures nor files here: GltfFile does.
#include <tiny_gltf.h>
