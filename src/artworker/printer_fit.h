// How a printer lays its paper: what is drawn is moved and stretched by so much, so that it comes to its
// place. Kept in the registry below the settings, for each printer by its name.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/outcome.h"
#include "platform/store/registry.h"

namespace ts5::artworker {

inline constexpr std::int32_t kMostFitOffset = 300;     // tenths of a millimetre, either way
inline constexpr std::int32_t kFullFitScale = 10'000;   // hundredths of a per cent
inline constexpr std::int32_t kMostFitStretch = 1'000;  // likewise, either way

struct PrinterFit {
  std::int32_t right = 0;  // tenths of a millimetre
  std::int32_t down = 0;
  std::int32_t across = kFullFitScale;  // hundredths of a per cent
  std::int32_t along = kFullFitScale;

  [[nodiscard]] bool Changes() const { return *this != PrinterFit{}; }
  bool operator==(const PrinterFit&) const = default;
};

// Within its limits; anything else cannot be a printer's fault.
[[nodiscard]] bool IsPossible(const PrinterFit& fit);

// Never fails: what is not there or not possible changes nothing.
[[nodiscard]] PrinterFit LoadPrinterFit(const Registry& registry, const std::string& printer);
// A fit that changes nothing is not kept.
[[nodiscard]] Outcome SavePrinterFit(Registry& registry, const std::string& printer, const PrinterFit& fit);

// The page that is measured: where its two marks and how long its two lines are meant to be, in millimetres.
inline constexpr double kMarkPlace = 20;  // from the left and from the top edge
inline constexpr double kAcrossLine = 100;
inline constexpr double kAlongLine = 100;

// What a ruler says of that page.
struct CalibrationReading {
  double left = kMarkPlace;
  double top = kMarkPlace;
  double across = kAcrossLine;
  double along = kAlongLine;
};
// The fit with which that printer would meet its places, if the page was printed with this one. Nothing when
// that is not possible.
[[nodiscard]] std::optional<PrinterFit> FitFrom(const CalibrationReading& reading,
                                                const PrinterFit& printedWith);

}  // namespace ts5::artworker
