// What is said of an element: its name for lists and screen readers, and what one should know before it is
// printed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "artworker/layout.h"

namespace ts5::artworker {

inline constexpr int kLeastDpi = 200;     // of a picture that looks sharp on paper
inline constexpr double kSafeMargin = 3;  // millimetres from the edge that a cut may take

// "Textfeld: Abendlied", in one line.
[[nodiscard]] std::string NameOf(const ArtworkElement& element);
// Its place and extent on the object in millimetres.
[[nodiscard]] std::string PlaceText(const ArtworkElement& element, const ArtworkObject& object);

// Dots of the picture on an inch of paper, the lesser of both directions; 0 when it cannot be shown.
[[nodiscard]] double DpiOf(const ArtworkElement& element, const ArtworkObject& object);

// Texts for the user: coarse or missing pictures, texts near the edge or in the hole, fonts that lack.
[[nodiscard]] std::vector<std::string> WarningsOf(const ArtworkElement& element, const ArtworkObject& object);

// What the layout wants for these objects (a set of bits) and this machine has not: fonts and pictures, a
// text for each.
[[nodiscard]] std::vector<std::string> LacksOf(const ArtworkLayout& layout, std::int32_t objects);

}  // namespace ts5::artworker
