#pragma once

#include "convert/gltf_library.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace TW2::convert
{
/// @name Members of a glTF extension: `otherwise` stands for one that is absent or of another kind
/// @{
[[nodiscard]] inline double getNumber(const tinygltf::Value& object, const char* key, double otherwise)
{
    if (object.IsObject() && object.Has(key) && object.Get(key).IsNumber())
    {
        return object.Get(key).GetNumberAsDouble();
    }
    return otherwise;
}

[[nodiscard]] inline std::size_t getSize(const tinygltf::Value& object, const char* key, std::size_t otherwise)
{
    constexpr double most = 1e15;
    const double number = getNumber(object, key, -1.0);
    return number >= 0.0 && number < most ? static_cast<std::size_t>(number) : otherwise;
}

/// -1 when absent.
[[nodiscard]] inline int getIndex(const tinygltf::Value& object, const char* key)
{
    constexpr double most = 1e9;
    const double number = getNumber(object, key, -1.0);
    return number >= 0.0 && number < most ? static_cast<int>(number) : -1;
}

[[nodiscard]] inline std::string getWord(const tinygltf::Value& object, const char* key, const char* otherwise)
{
    if (object.IsObject() && object.Has(key) && object.Get(key).IsString())
    {
        return object.Get(key).Get<std::string>();
    }
    return otherwise;
}

[[nodiscard]] inline std::vector<double> getNumbers(const tinygltf::Value& object, const char* key,
                                                    std::vector<double> otherwise)
{
    if (object.IsObject() && object.Has(key) && object.Get(key).IsArray())
    {
        const tinygltf::Value& list = object.Get(key);
        for (std::size_t i = 0; i < std::min(list.ArrayLen(), otherwise.size()); ++i)
        {
            const tinygltf::Value& value = list.Get(static_cast<int>(i));
            otherwise[i] = value.IsNumber() ? value.GetNumberAsDouble() : otherwise[i];
        }
    }
    return otherwise;
}
/// @}
}  // namespace TW2::convert
