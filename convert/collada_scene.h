#pragma once

#include "convert/collada_document.h"
#include "convert/model.h"

#include <string>
#include <vector>

namespace TW2::convert
{
/// One step of what a node's matrix is made of.
struct ColladaTransform
{
    enum class Kind
    {
        Matrix,
        Translate,
        Rotate,
        Scale,
        LookAt,
        Skew
    };
    Kind m_eKind = Kind::Matrix;
    std::string m_strSid;
    std::vector<double> m_vecValues;

    /// Row vectors; not mirrored.
    [[nodiscard]] Matrixd makeMatrix() const { return makeMatrix(m_eKind, m_vecValues.data()); }
    /// Of a step that has these numbers, as many as its kind has.
    [[nodiscard]] static Matrixd makeMatrix(Kind kind, const double* values);
    /// How many numbers a step of a kind has.
    [[nodiscard]] static std::size_t getSize(Kind kind);
};

/// A node of the scene. A node of the file that is shown in several places is several.
struct ColladaPlace
{
    pugi::xml_node m_element;
    std::string m_strName;
    int m_iParent = -1;
    std::vector<ColladaTransform> m_vecTransforms;  ///< the outermost first
};

/// The nodes of a COLLADA file's scene, parents before their children.
///
/// Matrices are in the file's space, mirrored at z: that makes its right-handed space left-handed.
class ColladaScene
{
public:
    explicit ColladaScene(const ColladaDocument& document);

    [[nodiscard]] const ColladaDocument& getDocument() const noexcept { return m_document; }
    [[nodiscard]] const std::vector<ColladaPlace>& getPlaces() const noexcept { return m_vecPlaces; }
    /// The local matrix of steps.
    [[nodiscard]] static Matrixd makeLocal(const std::vector<ColladaTransform>& transforms);
    /// What turns the file's space so that y points up.
    [[nodiscard]] Matrixd getRoot() const;
    /// Scene units per unit of the file.
    [[nodiscard]] double getUnit() const;
    /// The nodes that a node of the file with this id is shown as. Programs give one id to a node and its camera.
    [[nodiscard]] std::vector<std::size_t> findPlaces(const std::string& id) const;
    /// The node that a skin calls its joint: by its sid below one of the skeletons, else by its id or name; -1 for
    /// none.
    [[nodiscard]] int findJoint(const std::string& name, const std::vector<std::size_t>& skeletons) const;

private:
    void addPlace(const pugi::xml_node& element, int parent, unsigned int depth);

    const ColladaDocument& m_document;
    std::vector<ColladaPlace> m_vecPlaces;
};

/// Sixteen numbers of a COLLADA matrix, not mirrored; its last row is taken for what it has to be.
[[nodiscard]] Matrixd makeColladaMatrix(const double* values);
}  // namespace TW2::convert
