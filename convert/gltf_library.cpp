// The one place that compiles tinygltf.
#include <fstream>

#define TINYGLTF_IMPLEMENTATION
#include "convert/gltf_library.h"
