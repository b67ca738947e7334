// Encoders of the command line that the user plugged in ("MP3-Interfaces"): where each program is, what it
// makes, and the lines of parameters with which it can be called. They are kept in one definitions file.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/base/strings.h"

namespace ts5::interfaces {

// Characters.
inline constexpr std::size_t kMostInterfaceName = 32;
inline constexpr std::size_t kMostInterfaceExtension = 12;
inline constexpr std::size_t kMostParameterString = 255;

inline constexpr std::string_view kSourcePlaceholder = "{q}";
inline constexpr std::string_view kTargetPlaceholder = "{z}";

// kbit/s, as the list of the dialog has them.
inline constexpr std::array<std::uint32_t, 20> kInterfaceBitRates{
    8, 16, 18, 20, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 192, 224, 256, 320};

enum class Deemphasis : std::uint32_t { None = 0, Microseconds50And15 = 1, Ccitt = 2 };

// All but the parameters only describes them for the user.
struct ParameterSet {
  std::string parameters;  // with {q} for the source and {z} for the target
  std::uint32_t bitRate = kInterfaceBitRates.front();
  bool vbr = false;
  bool mono = false;
  bool crc = false;
  bool copyright = false;
  bool original = false;
  Deemphasis deemphasis = Deemphasis::None;

  bool operator==(const ParameterSet&) const = default;
};

struct EncoderInterface {
  std::string encoder;    // path of the program
  std::string name;       // for the user
  std::string extension;  // of the files it makes, without dot
  std::vector<ParameterSet> sets;

  // The program is there and may be run.
  [[nodiscard]] bool Available() const;
  bool operator==(const EncoderInterface&) const = default;
};
using EncoderInterfaces = std::vector<EncoderInterface>;

// "ts5i.cdi" in the program's own directory.
[[nodiscard]] std::string InterfacesPath();
// A file that is not there or cannot be read gives none. Texts that are too long are cut, but a path, which
// is then no encoder.
[[nodiscard]] EncoderInterfaces LoadInterfaces(const std::string& path);
// The file anew; without interfaces there is none. TargetFailed, WriteFailed.
[[nodiscard]] Outcome SaveInterfaces(const std::string& path, const EncoderInterfaces& interfaces);

// --- what the assistant, the editor and the console check alike; the message for the user, or nothing

[[nodiscard]] std::optional<TextId> EncoderFault(std::string_view path);
[[nodiscard]] std::optional<TextId> InterfaceNameFault(std::string_view name);
[[nodiscard]] std::optional<TextId> ExtensionFault(std::string_view extension);
[[nodiscard]] std::optional<TextId> ParametersFault(std::string_view parameters);

// The first bit rate of the list for one that is not in it.
[[nodiscard]] std::size_t BitRateIndex(std::uint32_t bitRate);

// The text of "Info" for a set, counted from 0.
[[nodiscard]] std::string DescribeSet(const EncoderInterface& interface, std::size_t set);

}  // namespace ts5::interfaces
