#pragma once

#include "convert/box.h"
#include "convert/model.h"
#include "convert/script_writer.h"

#include <set>
#include <string>
#include <vector>

namespace TW2::convert
{
/// A character that was converted before: what is needed to give it further motion.
struct CharacterScript
{
    std::string m_strFile;  ///< the script
    std::string m_strText;
    unsigned int m_uiBlock = 0;  ///< of the script's blocks: the one with the animations
    std::string m_strBlock;      ///< its name
    std::string m_strPlace;      ///< what names of the block's files begin with: folders, and the character's name
    std::string m_strCrossMode;
    int m_iNextIndex = 0;              ///< behind all that the block has
    std::set<std::string> m_setNames;  ///< of its animations, in lower case
    /// The box that the script gives what is drawn; empty when it is computed.
    Box m_bounds;
    /// Nodes are the bones, in their pose at rest; what is drawn hangs on them.
    Model m_model;
};

/// Reads a script and the geometry that it names, relative to the script's folder. Of several blocks without skin data
/// `block` tells which one is meant; empty: the only one. Throws ConvertException for a script without such a block,
/// and what reading throws.
[[nodiscard]] CharacterScript readCharacter(const std::string& scriptFile, const std::string& block);

/// The script's text with further animation blocks behind those that the character has; nothing else is changed.
[[nodiscard]] std::string addAnimations(const CharacterScript& character,
                                        const std::vector<ScriptBlock::Animation>& animations);
}  // namespace TW2::convert
