#pragma once

#include "tests/support/double_matrix.h"

#include <platform/math/matrix4x3.h>
#include <platform/scene/base_object.h>

#include <random>

using Matrix = M_Matrix4x3Template<float>;
using Vector = M_Vector3Template<float>;
using support::DoubleMatrix;
using support::DoubleVector;
using support::toDouble;

/// The plainest scene object there can be.
class TestObject : public P_BaseObject
{
public:
    TestObject() = default;
    TestObject(const TestObject& other) : P_BaseObject(other) {}
    [[nodiscard]] P_Context* getContext() const override { return getStoredContext(); }
};

/// Random input that is the same in every run.
class Dice
{
public:
    explicit Dice(unsigned int seed) : m_engine(seed) {}

    /// 0 to count - 1.
    std::size_t pick(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(m_engine); }
    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_engine); }
    float number(float from, float to) { return std::uniform_real_distribution<float>(from, to)(m_engine); }
    Vector vector(float extent) { return {number(-extent, extent), number(-extent, extent), number(-extent, extent)}; }
    /// Near a rotation with a little scale and shear, so that products of many stay in range and can be inverted.
    Matrix matrix(float extent)
    {
        const Vector x = (vector(1.0f) + Vector{0.0f, 0.0f, 1e-3f}).normalized();
        const Vector y = x.cross(vector(1.0f) + Vector{0.0f, 1e-3f, 0.0f}).normalized();
        Matrix result;
        result.setRow(0, x * number(0.9f, 1.1f));
        result.setRow(1, y * number(0.9f, 1.1f));
        result.setRow(2, x.cross(y) + x * number(-0.1f, 0.1f));
        result.setTranslation(vector(extent));
        return result;
    }

private:
    std::mt19937 m_engine;
};
