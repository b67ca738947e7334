// The sounds of General MIDI as a menu: sixteen families of eight programs.
#pragma once

#include <QString>
#include <cstdint>
#include <memory>

class QMenu;

namespace ts5 {

// The data of an entry is this number plus its program.
inline constexpr int kSoundCommand = 32000;

[[nodiscard]] QString SoundName(std::uint8_t program);
// The current program is checked.
[[nodiscard]] std::unique_ptr<QMenu> SoundMenu(std::uint8_t current);

}  // namespace ts5
