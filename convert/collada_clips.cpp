#include "convert/collada_clips.h"

#include "convert/collada_curve.h"
#include "convert/model_space.h"
#include "convert/node_motion.h"
#include "convert/rotation.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <map>
#include <optional>
#include <span>

namespace TW2::convert
{
namespace
{
/// What a curve moves of a node: numbers of one of its steps.
struct Movement
{
    std::size_t m_uiTransform;
    std::size_t m_uiFirst;
    std::size_t m_uiCount;
    std::shared_ptr<const ColladaCurve> m_pCurve;
};

/// A matrix in parts that can be blended: a rotation, scales along its axes (the last negative where it mirrors), and
/// a place.
struct Parts
{
    Matrixd m_rotation;
    double m_scales[3];
    Vector3d m_vPlace;

    explicit Parts(const Matrixd& matrix) : m_vPlace(matrix.getTranslation())
    {
        for (int row = 0; row < 3; ++row)
        {
            m_scales[row] = matrix.getRow(row).length();
        }
        m_scales[2] *= matrix.determinant() < 0.0 ? -1.0 : 1.0;
        for (int row = 0; row < 3; ++row)
        {
            m_rotation.setRow(row, m_scales[row] != 0.0 ? matrix.getRow(row) * (1.0 / m_scales[row]) : Vector3d());
        }
    }

    /// Whether the axes are at right angles, so that the parts are the whole matrix.
    [[nodiscard]] bool isWhole() const
    {
        constexpr double tolerance = 1e-3;
        const Vector3d x = m_rotation.getRow(0);
        const Vector3d y = m_rotation.getRow(1);
        const Vector3d z = m_rotation.getRow(2);
        return std::abs(x.dot(y)) < tolerance && std::abs(x.dot(z)) < tolerance && std::abs(y.dot(z)) < tolerance &&
               std::abs(m_rotation.determinant() - 1.0) < tolerance;
    }
};

/// Between two matrices: turned the shorter way round where both are rotations with scales, else number by number.
Matrixd blend(const double* from, const double* to, double part)
{
    const Parts a(makeColladaMatrix(from));
    const Parts b(makeColladaMatrix(to));
    if (!a.isWhole() || !b.isWhole())
    {
        double between[16];
        for (int i = 0; i < 16; ++i)
        {
            between[i] = from[i] + (to[i] - from[i]) * part;
        }
        return makeColladaMatrix(between);
    }
    Matrixd matrix = turnShortest(a.m_rotation, b.m_rotation, part);
    for (int row = 0; row < 3; ++row)
    {
        matrix.setRow(row, matrix.getRow(row) * (a.m_scales[row] + (b.m_scales[row] - a.m_scales[row]) * part));
    }
    matrix.setTranslation(a.m_vPlace + (b.m_vPlace - a.m_vPlace) * part);
    return matrix;
}

class ColladaMotion : public NodeMotion
{
public:
    ColladaMotion(std::vector<ColladaTransform> transforms, std::vector<Movement> movements, double start,
                  double duration)
        : m_vecMovements(std::move(movements)), m_dStart(start), m_dDuration(duration)
    {
        // Steps by step, each one's in the order of the file.
        std::stable_sort(m_vecMovements.begin(), m_vecMovements.end(),
                         [](const Movement& a, const Movement& b) { return a.m_uiTransform < b.m_uiTransform; });
        for (const ColladaTransform& transform : transforms)
        {
            Step& step = m_vecSteps.emplace_back();
            step.m_eKind = transform.m_eKind;
            step.m_atRest = transform.makeMatrix();
            std::copy(transform.m_vecValues.begin(), transform.m_vecValues.end(), step.m_values.begin());
        }
    }

    [[nodiscard]] Matrixd at(double seconds) const override
    {
        const double time = m_dStart + seconds;
        Matrixd local;
        auto movement = m_vecMovements.begin();
        for (std::size_t i = 0; i < m_vecSteps.size(); ++i)
        {
            const auto first = movement;
            while (movement != m_vecMovements.end() && movement->m_uiTransform == i)
            {
                ++movement;
            }
            local =
                (first == movement ? m_vecSteps[i].m_atRest : makeStep(m_vecSteps[i], {first, movement}, time)) * local;
        }
        return mirrorZ(local);
    }

    void addTimes(std::vector<double>& times) const override
    {
        for (const Movement& movement : m_vecMovements)
        {
            for (const double time : movement.m_pCurve->m_vecTimes)
            {
                add(time, times);
            }
        }
    }

    void addJumps(std::vector<double>& jumps) const override
    {
        for (const Movement& movement : m_vecMovements)
        {
            const ColladaCurve& curve = *movement.m_pCurve;
            for (std::size_t i = 0; i + 1 < curve.m_vecTimes.size(); ++i)
            {
                if (curve.m_vecKinds[i] == ColladaCurve::Kind::Step)
                {
                    add(curve.m_vecTimes[i + 1], jumps);
                }
            }
        }
    }

private:
    static constexpr std::size_t mostNumbers = 16;  ///< of a step

    /// One step of the node's matrix as it is without the curves.
    struct Step
    {
        ColladaTransform::Kind m_eKind = ColladaTransform::Kind::Matrix;
        std::array<double, mostNumbers> m_values{};
        Matrixd m_atRest;
    };

    /// A step's matrix as its curves make it.
    [[nodiscard]] static Matrixd makeStep(const Step& step, std::span<const Movement> movements, double time)
    {
        std::array<double, mostNumbers> values = step.m_values;
        std::optional<Matrixd> whole;
        for (const Movement& movement : movements)
        {
            whole = blendWhole(movement, time);
            for (std::size_t i = 0; !whole && i < movement.m_uiCount; ++i)
            {
                values[movement.m_uiFirst + i] = movement.m_pCurve->at(time, i);
            }
        }
        return whole ? *whole : ColladaTransform::makeMatrix(step.m_eKind, values.data());
    }

    /// Whole matrices go straight from key to key as rotations do. Nothing where the movement is none of these.
    [[nodiscard]] static std::optional<Matrixd> blendWhole(const Movement& movement, double time)
    {
        const ColladaCurve& curve = *movement.m_pCurve;
        if (movement.m_uiCount != ColladaTransform::getSize(ColladaTransform::Kind::Matrix))
        {
            return std::nullopt;
        }
        const std::size_t key = curve.findKey(time);
        const bool between = time > curve.m_vecTimes.front() && key + 1 < curve.m_vecTimes.size();
        if (!between || curve.m_vecKinds[key] != ColladaCurve::Kind::Linear)
        {
            return std::nullopt;
        }
        const double span = curve.m_vecTimes[key + 1] - curve.m_vecTimes[key];
        const double* const from = curve.m_vecValues.data() + key * curve.m_uiStride;
        return blend(from, from + curve.m_uiStride, (time - curve.m_vecTimes[key]) / span);
    }

    void add(double time, std::vector<double>& times) const
    {
        if (time >= m_dStart && time <= m_dStart + m_dDuration)
        {
            times.push_back(time - m_dStart);
        }
    }

    std::vector<Step> m_vecSteps;
    std::vector<Movement> m_vecMovements;  ///< by step
    double m_dStart;
    double m_dDuration;
};

/// "node/step", "node/step.MEMBER" or "node/step(column)(row)".
struct Target
{
    std::string m_strNode;
    std::string m_strSid;
    std::string m_strMember;
    std::vector<std::size_t> m_vecIndices;

    explicit Target(const std::string& text)
    {
        const std::size_t slash = text.find('/');
        m_strNode = ColladaDocument::decode(text.substr(0, slash).c_str());
        std::string rest = slash == std::string::npos ? std::string() : text.substr(text.rfind('/') + 1);
        const std::size_t mark = rest.find_first_of(".(");
        m_strSid = rest.substr(0, mark);
        if (mark == std::string::npos)
        {
            return;
        }
        if (rest[mark] == '.')
        {
            m_strMember = rest.substr(mark + 1);
            return;
        }
        for (std::size_t at = mark; at != std::string::npos; at = rest.find('(', at + 1))
        {
            m_vecIndices.push_back(static_cast<std::size_t>(std::strtoul(rest.c_str() + at + 1, nullptr, 10)));
        }
    }

    /// The first number that is moved, of a step with `size` numbers, and how many of a curve with `stride`.
    [[nodiscard]] std::optional<std::pair<std::size_t, std::size_t>> findNumbers(std::size_t size,
                                                                                 std::size_t stride) const
    {
        std::size_t first = 0;
        std::size_t count = stride;
        if (!m_vecIndices.empty())
        {
            first = m_vecIndices.size() > 1 ? m_vecIndices[0] + 4 * m_vecIndices[1] : m_vecIndices[0];
            count = 1;
        }
        else if (!m_strMember.empty())
        {
            static constexpr std::pair<std::string_view, std::size_t> members[]{
                {"X", 0}, {"Y", 1}, {"Z", 2}, {"ANGLE", 3}};
            std::string upper = m_strMember;
            std::transform(upper.begin(), upper.end(), upper.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
            const auto* const found = std::find_if(std::begin(members), std::end(members),
                                                   [&upper](const auto& member) { return member.first == upper; });
            if (found == std::end(members))
            {
                return std::nullopt;
            }
            first = found->second;
            count = 1;
        }
        return first + count <= size ? std::optional(std::pair(first, count)) : std::nullopt;
    }
};

class ClipReader
{
public:
    ClipReader(const ColladaScene& scene, Warnings& warnings)
        : m_scene(scene), m_document(scene.getDocument()), m_warnings(warnings)
    {
    }

    /// Adds what an animation moves, and those inside it.
    void add(const pugi::xml_node& animation, unsigned int depth = 0)
    {
        constexpr unsigned int deepest = 100;
        if (depth > deepest)
        {
            m_document.fail(animation, "animations that are nested at most 100 deep");
        }
        for (const pugi::xml_node& channel : animation.children("channel"))
        {
            addChannel(channel);
        }
        for (const pugi::xml_node& inner : animation.children("animation"))
        {
            add(inner, depth + 1);
        }
    }

    /// A clip of all that was added, between two times of the file; without an end up to the last key.
    Clip make(const std::string& name, double start, std::optional<double> end)
    {
        double last = 0.0;
        for (const auto& [place, movements] : m_mapMovements)
        {
            for (const Movement& movement : movements)
            {
                last = std::max(last, movement.m_pCurve->m_vecTimes.back());
            }
        }
        Clip clip;
        clip.m_strName = name;
        clip.m_dDuration = std::max(end.value_or(last) - start, 0.0);
        for (auto& [place, movements] : m_mapMovements)
        {
            Channel channel;
            channel.m_iNode = static_cast<int>(place);
            channel.m_pMotion = std::make_shared<ColladaMotion>(m_scene.getPlaces()[place].m_vecTransforms,
                                                                std::move(movements), start, clip.m_dDuration);
            clip.m_vecChannels.push_back(std::move(channel));
        }
        m_mapMovements.clear();
        return clip;
    }

private:
    void addChannel(const pugi::xml_node& channel)
    {
        const Target target(channel.attribute("target").value());
        const std::vector<std::size_t> places = m_scene.findPlaces(target.m_strNode);
        std::shared_ptr<const ColladaCurve> curve;
        bool moves = false;
        for (const std::size_t place : places)
        {
            const std::vector<ColladaTransform>& transforms = m_scene.getPlaces()[place].m_vecTransforms;
            for (std::size_t i = 0; i < transforms.size() && !target.m_strSid.empty(); ++i)
            {
                if (transforms[i].m_strSid != target.m_strSid)
                {
                    continue;
                }
                if (!curve)
                {
                    curve = readCurve(m_document.follow(channel, "source"));
                }
                const auto numbers = target.findNumbers(transforms[i].m_vecValues.size(), curve->m_uiStride);
                if (!numbers)
                {
                    m_document.fail(channel, "a target that the step of the node has, found \"" +
                                                 std::string(channel.attribute("target").value()) + "\"");
                }
                if (!curve->m_vecTimes.empty())
                {
                    m_mapMovements[place].push_back({i, numbers->first, numbers->second, curve});
                }
                moves = true;
            }
        }
        if (!moves)
        {
            m_warnings.addLeftOut("\"" + std::string(channel.attribute("target").value()) + "\"",
                                  "its animation: nodes alone are moved");
        }
    }

    std::shared_ptr<const ColladaCurve> readCurve(const pugi::xml_node& sampler)
    {
        const auto curve = std::make_shared<ColladaCurve>();
        std::vector<std::string> kinds;
        for (const ColladaDocument::Input& input : m_document.readInputs(sampler))
        {
            ColladaDocument::Source source = m_document.readSource(input.m_source);
            if (input.m_strSemantic == "INPUT")
            {
                curve->m_vecTimes = std::move(source.m_vecNumbers);
            }
            else if (input.m_strSemantic == "OUTPUT")
            {
                curve->m_vecValues = std::move(source.m_vecNumbers);
                curve->m_uiStride = source.m_uiStride;
            }
            else if (input.m_strSemantic == "IN_TANGENT")
            {
                curve->m_vecArriving = std::move(source.m_vecNumbers);
            }
            else if (input.m_strSemantic == "OUT_TANGENT")
            {
                curve->m_vecLeaving = std::move(source.m_vecNumbers);
            }
            else if (input.m_strSemantic == "INTERPOLATION")
            {
                kinds = std::move(source.m_vecWords);
            }
        }
        const std::size_t count = curve->m_vecTimes.size();
        if (curve->m_vecValues.size() < count * curve->m_uiStride)
        {
            m_document.fail(sampler, "a value per time, found " + std::to_string(curve->m_vecValues.size()) +
                                         " numbers for " + std::to_string(count) + " times");
        }
        curve->m_vecValues.resize(count * curve->m_uiStride);
        if (!std::is_sorted(curve->m_vecTimes.begin(), curve->m_vecTimes.end()))
        {
            m_document.fail(sampler, "times that ascend");
        }
        for (std::size_t i = 0; i < count; ++i)
        {
            curve->m_vecKinds.push_back(i < kinds.size() ? toKind(kinds[i]) : ColladaCurve::Kind::Linear);
        }
        return curve;
    }

    ColladaCurve::Kind toKind(const std::string& word)
    {
        if (word == "CARDINAL" || word == "BSPLINE")
        {
            m_warnings.addLeftOut("keys of kind " + word, "their curve: they are played straight");
        }
        return word == "STEP"      ? ColladaCurve::Kind::Step
               : word == "BEZIER"  ? ColladaCurve::Kind::Bezier
               : word == "HERMITE" ? ColladaCurve::Kind::Hermite
                                   : ColladaCurve::Kind::Linear;
    }

    const ColladaScene& m_scene;
    const ColladaDocument& m_document;
    Warnings& m_warnings;
    std::map<std::size_t, std::vector<Movement>> m_mapMovements;  ///< per place
};
}  // namespace

std::vector<Clip> readColladaClips(const ColladaScene& scene, const std::string& fileName, Warnings& warnings)
{
    const ColladaDocument& document = scene.getDocument();
    std::vector<Clip> clips;
    ClipReader reader(scene, warnings);
    for (const pugi::xml_node& library : document.getRoot().children("library_animation_clips"))
    {
        for (const pugi::xml_node& element : library.children("animation_clip"))
        {
            for (const pugi::xml_node& instance : element.children("instance_animation"))
            {
                reader.add(document.follow(instance, "url"));
            }
            const pugi::xml_attribute name =
                element.attribute("name") ? element.attribute("name") : element.attribute("id");
            const pugi::xml_attribute end = element.attribute("end");
            clips.push_back(reader.make(name.value(), element.attribute("start").as_double(0.0),
                                        end ? std::optional(end.as_double()) : std::nullopt));
        }
    }
    std::erase_if(clips, [](const Clip& clip) { return clip.m_vecChannels.empty(); });
    if (!clips.empty())
    {
        return clips;
    }
    for (const pugi::xml_node& library : document.getRoot().children("library_animations"))
    {
        for (const pugi::xml_node& animation : library.children("animation"))
        {
            reader.add(animation);
        }
    }
    Clip all = reader.make(std::filesystem::path(fileName).stem().string(), 0.0, std::nullopt);
    if (!all.m_vecChannels.empty())
    {
        clips.push_back(std::move(all));
    }
    return clips;
}
}  // namespace TW2::convert
