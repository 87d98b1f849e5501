#include "fuzz/model_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzz::InputFile s_file(".fbx");
    fuzz::readModel(s_file, data, size);
    return 0;
}
