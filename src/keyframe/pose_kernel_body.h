#pragma once

// The arithmetic of playing, once for every number of lanes. Included by the sources that make a kernel of it, one of
// which is compiled for a processor that others are not: nothing here is called by its own name with float arguments
// only, everything is a template of the lanes (see M_Float8Avx2).

#include "keyframe/pose_batch.h"
#include "keyframe/quaternion_rows.h"

#include <platform/compiler.h>
#include <platform/math/float4.h>
#include <platform/math/matrix_rows.h>

#include <utility>

namespace TW2
{
/// A matrix per lane. `F` is M_Float4 or one of its like.
template <typename F>
struct PoseLanes
{
    using Vector = M_Vector3Template<F>;

    M_Rows<F> m_rows;
    Vector m_translation;

    S_ALWAYS_INLINE static PoseLanes load(const float* const* from) noexcept
    {
        F e[3][4];
        M_loadLanes(from, 0, e[0]);
        M_loadLanes(from, 4, e[1]);
        M_loadLanes(from, 8, e[2]);
        return {{{{e[0][0], e[0][1], e[0][2]}, {e[0][3], e[1][0], e[1][1]}, {e[1][2], e[1][3], e[2][0]}}},
                {e[2][1], e[2][2], e[2][3]}};
    }
    /// From rigid keys: a quaternion w x y z and a translation, four floats each.
    S_ALWAYS_INLINE static PoseLanes loadRigid(const float* const* rotations, const float* const* translations) noexcept
    {
        F q[4];
        F t[4];
        M_loadLanes(rotations, 0, q);
        M_loadLanes(translations, 0, t);
        return makeRigid(q[0], {q[1], q[2], q[3]}, {t[0], t[1], t[2]});
    }
    /// From rigid keys that lie side by side: every component poseLanes floats behind the one before.
    S_ALWAYS_INLINE static PoseLanes loadPacked(const float* rotations, const float* translations) noexcept
    {
        const auto at = [](const float* floats, std::size_t component)
        { return F::load(floats + component * poseLanes); };
        return makeRigid(at(rotations, 0), {at(rotations, 1), at(rotations, 2), at(rotations, 3)},
                         {at(translations, 0), at(translations, 1), at(translations, 2)});
    }
    S_ALWAYS_INLINE void store(float* const* to, std::size_t count) const noexcept
    {
        const auto& r = m_rows.m_rows;
        const F first[4] = {r[0].x, r[0].y, r[0].z, r[1].x};
        const F middle[4] = {r[1].y, r[1].z, r[2].x, r[2].y};
        const F last[4] = {r[2].z, m_translation.x, m_translation.y, m_translation.z};
        M_storeLanes(first, to, 0, count);
        M_storeLanes(middle, to, 4, count);
        M_storeLanes(last, to, 8, count);
    }

    /// This pose with `change(element, element of other)` in every element.
    template <typename Change>
    S_ALWAYS_INLINE PoseLanes combine(const PoseLanes& other, const Change& change) const noexcept
    {
        PoseLanes result;
        for (std::size_t i = 0; i < 3; ++i)
        {
            result.m_rows.m_rows[i] = combine(m_rows.m_rows[i], other.m_rows.m_rows[i], change);
        }
        result.m_translation = combine(m_translation, other.m_translation, change);
        return result;
    }

    /// Where the mask is set the lane of `value`, else that of `otherwise`.
    template <typename Mask>
    S_ALWAYS_INLINE static PoseLanes select(const Mask& mask, const PoseLanes& value,
                                            const PoseLanes& otherwise) noexcept
    {
        return value.combine(otherwise, [&mask](const F& a, const F& b) { return whereMask(mask, a, b); });
    }

    /// Corrects some poses row by row, each row of all of them before the next row: a row waits for the square roots
    /// and quotients of the one before, and what other poses have to do fills the time.
    template <std::size_t... i>
    S_ALWAYS_INLINE static void correct(PoseLanes* poses, InterpolationMode mode, std::index_sequence<i...>) noexcept
    {
        if (mode == InterpolationMode::Normalized)
        {
            (poses[i].m_rows.normalize(), ...);
        }
        else if (mode == InterpolationMode::Orthonormalized)
        {
            (poses[i].m_rows.template orthonormalizeRow<0>(), ...);
            (poses[i].m_rows.template orthonormalizeRow<1>(), ...);
            (poses[i].m_rows.template orthonormalizeRow<2>(), ...);
        }
    }

private:
    S_ALWAYS_INLINE static PoseLanes makeRigid(const F& w, const Vector& v, const Vector& translation) noexcept
    {
        return {toRows(w, v, getProductScale(w, v)), translation};
    }
    template <typename Mask>
    S_ALWAYS_INLINE static F whereMask(const Mask& mask, const F& a, const F& b) noexcept
    {
        using M_OneFloat::select;  // the lanes' own by their class, not the one above
        return select(mask, a, b);
    }
    template <typename Change>
    S_ALWAYS_INLINE static Vector combine(const Vector& a, const Vector& b, const Change& change) noexcept
    {
        return {change(a.x, b.x), change(a.y, b.y), change(a.z, b.z)};
    }
};

template <typename F>
class PoseKernelBody
{
public:
    static void run(const PoseBatch& batch) noexcept
    {
        std::size_t at = 0;
        for (; at + F::laneCount < batch.m_uiCount; at += 2 * F::laneCount)
        {
            run(batch, at, std::make_index_sequence<2>());
        }
        if (at < batch.m_uiCount)
        {
            run(batch, at, std::make_index_sequence<1>());
        }
    }

private:
    using Pose = PoseLanes<F>;

    // laneCount matrices from `at` on for each i, the last ones of which may be missing.
    template <std::size_t... i>
    S_ALWAYS_INLINE static void run(const PoseBatch& batch, std::size_t at, std::index_sequence<i...> all) noexcept
    {
        Pose matrices[sizeof...(i)];
        if (batch.m_bReadsMatrices)
        {
            ((matrices[i] = Pose::load(batch.m_matrices + at + i * F::laneCount)), ...);
        }
        for (std::size_t step = 0; step < batch.m_uiSteps; ++step)
        {
            apply(batch.m_steps[step], at, matrices, all);
        }
        Pose::correct(matrices, batch.m_correction, all);
        (store(matrices[i], batch, at + i * F::laneCount), ...);
    }
    S_ALWAYS_INLINE static void store(const Pose& matrices, const PoseBatch& batch, std::size_t at) noexcept
    {
        const std::size_t left = batch.m_uiCount - at;
        matrices.store(batch.m_matrices + at, left < F::laneCount ? left : F::laneCount);
    }

    template <std::size_t... i>
    S_ALWAYS_INLINE static void apply(const PoseStep& step, std::size_t at, Pose* matrices,
                                      std::index_sequence<i...> all) noexcept
    {
        if (step.m_form == PoseStep::Form::Mixed)
        {
            (applyMixed(step, at + i * F::laneCount, matrices[i]), ...);
            return;
        }
        Pose poses[] = {sample(step, at + i * F::laneCount)...};
        Pose::correct(poses, step.m_mode, all);
        (write(step, poses[i], matrices[i]), ...);
    }
    S_ALWAYS_INLINE static Pose sample(const PoseStep& step, std::size_t at) noexcept
    {
        return step.m_form == PoseStep::Form::Packed ? blendPacked(step, at) : blendRigid(step.m_rigid, at);
    }
    S_ALWAYS_INLINE static void applyMixed(const PoseStep& step, std::size_t at, Pose& matrices) noexcept
    {
        const Pose before = matrices;
        write(step, sampleMixed(step, at), matrices);
        if (const auto isAbsent = isSet(step.m_mixed.m_isAbsent + at); any(isAbsent))
        {
            matrices = Pose::select(isAbsent, before, matrices);
        }
    }

    // Keys of both kinds and tracks of all modes side by side: each that occurs in all lanes, and of each the lanes
    // that it is for.
    S_NO_INLINE static Pose sampleMixed(const PoseStep& step, std::size_t at) noexcept
    {
        const PoseStep::Mixed& mixed = step.m_mixed;
        Pose pose = blendRigid(step.m_rigid, at);
        if (const auto isFull = isSet(mixed.m_isFull + at); any(isFull))
        {
            pose = Pose::select(isFull, blendFull(step, at), pose);
        }
        Pose corrected = pose;
        if (const auto isNormalized = isSet(mixed.m_isNormalized + at); any(isNormalized))
        {
            corrected.m_rows.normalize();
            corrected = Pose::select(isNormalized, corrected, pose);
        }
        if (const auto isOrthonormalized = isSet(mixed.m_isOrthonormalized + at); any(isOrthonormalized))
        {
            pose.m_rows.orthonormalize();
            corrected = Pose::select(isOrthonormalized, pose, corrected);
        }
        return corrected;
    }
    S_ALWAYS_INLINE static auto isSet(const float* flags) noexcept { return isLess(F(), F::load(flags)); }

    S_ALWAYS_INLINE static void write(const PoseStep& step, const Pose& pose, Pose& matrices) noexcept
    {
        const F weight(step.m_fWeight);
        switch (step.m_write)
        {
            case PoseWrite::Replace:
                matrices = pose;
                return;
            case PoseWrite::Scale:
                matrices = pose.combine(pose, [&weight](const F& m, const F&) { return m * weight; });
                return;
            case PoseWrite::Add:
                matrices = pose.combine(matrices, [&weight](const F& m, const F& d) { return m * weight + d; });
                return;
            case PoseWrite::Blend:
                matrices = pose.combine(matrices, [&weight](const F& m, const F& d) { return d + (m - d) * weight; });
                return;
        }
    }

    /// On a key the result is the key itself, also where the difference is too large for a float.
    S_ALWAYS_INLINE static Pose blend(const Pose& a, const Pose& b, const F& fraction) noexcept
    {
        const Pose between = a.combine(b, [&fraction](const F& x, const F& y) { return (y - x) * fraction + x; });
        const auto onKey = isEqual(fraction, F());
        return any(onKey) ? Pose::select(onKey, a, between) : between;
    }

    S_ALWAYS_INLINE static Pose blendPacked(const PoseStep& step, std::size_t at) noexcept
    {
        const PoseStep::Packed& packed = step.m_packed[at / poseLanes];
        const std::size_t lane = at % poseLanes;
        return blend(Pose::loadPacked(packed.m_lowerRotations + lane, packed.m_lowerTranslations + lane),
                     Pose::loadPacked(packed.m_upperRotations + lane, packed.m_upperTranslations + lane),
                     F(packed.m_fFraction));
    }
    S_ALWAYS_INLINE static Pose blendRigid(const PoseStep::Rigid& rigid, std::size_t at) noexcept
    {
        return blend(Pose::loadRigid(rigid.m_lowerRotation + at, rigid.m_lowerTranslation + at),
                     Pose::loadRigid(rigid.m_upperRotation + at, rigid.m_upperTranslation + at),
                     F::load(rigid.m_distance + at) / F::load(rigid.m_span + at));
    }
    S_ALWAYS_INLINE static Pose blendFull(const PoseStep& step, std::size_t at) noexcept
    {
        return blend(Pose::load(step.m_mixed.m_lower + at), Pose::load(step.m_mixed.m_upper + at),
                     F::load(step.m_rigid.m_distance + at) / F::load(step.m_rigid.m_span + at));
    }
};
}  // namespace TW2
