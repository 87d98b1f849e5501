#pragma once

#include "viewer/window/requests.h"

#include <cstddef>
#include <span>
#include <string>

namespace TW2::viewer
{
class Viewer;

/// What several panels are made of. Each control asks for a command, so that all of them fail and are tested alike.

/// A word of a command, in quotes.
[[nodiscard]] std::string quote(const std::string& word);
/// A number of a command.
[[nodiscard]] std::string toWord(float number);
/// Height of a letter: everything is measured by it, so that it fits on every screen.
[[nodiscard]] float unit();
/// "(none)" for an animation that there is not.
[[nodiscard]] const char* getClipName(const Viewer& viewer, int animation);

constexpr int noChoice = -2;
/// A closed list, as wide as its place, that reads "label: now", or "now" when the label is hidden ("##..."); tells
/// both when the mouse is on it, since its place may be too small. True while it is open: ImGui::EndCombo ends it.
[[nodiscard]] bool beginChoice(const char* label, const char* now);
/// A list of animations to choose from; the chosen index, -1 for "(none)", noChoice while nothing was chosen.
[[nodiscard]] int chooseClip(const char* label, const Viewer& viewer, int now, bool withNone);
/// A box that asks for "command on" and "command off".
void checkbox(const char* label, const std::string& command, bool now, Requests& requests);
/// One of several words to choose from; asks for "command word".
void chooseWord(const char* label, const char* command, std::span<const char* const> words, std::size_t now,
                Requests& requests);
/// Asks for a command when it is pressed.
void button(const char* label, const std::string& command, Requests& requests);
}  // namespace TW2::viewer
