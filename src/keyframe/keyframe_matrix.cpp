#include "keyframe/quaternion_rows.h"

#include <tw2/keyframe/keyframe_matrix.h>

#include <cmath>

namespace TW2
{
TW_KeyframeMatrix::TW_KeyframeMatrix(const M_Matrix4x3Template<float>& matrix) : m_vTranslation(matrix.getTranslation())
{
    const auto& m = matrix.m;
    const float trace = m[2][2] + m[1][1] + m[0][0];
    if (trace > 0.0F)
    {
        const float s = std::sqrt(trace + 1.0F);
        const float r = 0.5F / s;
        m_fRotationW = 0.5F * s;
        m_vRotation = {(m[1][2] - m[2][1]) * r, (m[2][0] - m[0][2]) * r, (m[0][1] - m[1][0]) * r};
        return;
    }
    // The largest diagonal element gives the largest component, by which the others are safely divided.
    int i = m[1][1] > m[0][0] ? 1 : 0;
    i = m[2][2] > m[i][i] ? 2 : i;
    const int j = (i + 1) % 3;
    const int k = (j + 1) % 3;
    const float s = std::sqrt(m[i][i] - m[j][j] - m[k][k] + 1.0F);
    const float r = s != 0.0F ? 0.5F / s : 0.0F;
    float vector[3];
    vector[i] = 0.5F * s;
    vector[j] = (m[i][j] + m[j][i]) * r;
    vector[k] = (m[i][k] + m[k][i]) * r;
    m_fRotationW = (m[j][k] - m[k][j]) * r;
    m_vRotation = {vector[0], vector[1], vector[2]};
}

M_Matrix4x3Template<float> TW_KeyframeMatrix::toMatrix() const
{
    const float scale = getProductScale(m_fRotationW, m_vRotation);
    const M_Rows<float> rows = toRows(m_fRotationW, m_vRotation, std::isfinite(scale) ? scale : 0.0F);
    M_Matrix4x3Template<float> matrix;
    for (int r = 0; r < 3; ++r)
    {
        matrix.setRow(r, rows.m_rows[r]);
    }
    matrix.setTranslation(m_vTranslation);
    return matrix;
}

TW_KeyframeMatrix& TW_KeyframeMatrix::operator+=(const TW_KeyframeMatrix& other)
{
    m_vTranslation += other.m_vTranslation;
    m_fRotationW += other.m_fRotationW;
    m_vRotation += other.m_vRotation;
    return *this;
}

TW_KeyframeMatrix& TW_KeyframeMatrix::operator-=(const TW_KeyframeMatrix& other)
{
    m_vTranslation -= other.m_vTranslation;
    m_fRotationW -= other.m_fRotationW;
    m_vRotation -= other.m_vRotation;
    return *this;
}

TW_KeyframeMatrix& TW_KeyframeMatrix::operator*=(float factor)
{
    m_vTranslation *= factor;
    m_fRotationW *= factor;
    m_vRotation *= factor;
    return *this;
}
}  // namespace TW2
