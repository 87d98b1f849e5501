#include "bench/yardstick.h"

#include <platform/math/matrix4x3.h>

#include <cstddef>
#include <vector>

namespace
{
using Matrix = M_Matrix4x3Template<float>;

// World matrices as a flat hierarchy makes them: every local matrix times the same parent.
void multiplyByOneParent(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<Matrix> locals(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        locals[i].m[0][1] = 0.001F * static_cast<float>(i % 100);
        locals[i].setTranslation({static_cast<float>(i % 7), 1.0F, 2.0F});
    }
    std::vector<Matrix> worlds(count);
    Matrix parent = Matrix::translation({1.0F, 2.0F, 3.0F});
    benchmark::DoNotOptimize(parent);
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            worlds[i] = locals[i] * parent;
        }
        benchmark::ClobberMemory();
    }
    TW2::bench::report(state, {.items = count, .bytes = count * sizeof(Matrix)});
}
BENCHMARK(multiplyByOneParent)->Name("math/multiply_by_one_parent")->Arg(64)->Arg(64'000);
}  // namespace
