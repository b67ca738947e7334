#include "artworker/printer_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "frame/settings.h"
#include "platform/base/text.h"

namespace ts5::artworker {
namespace {

struct FitValue {
  std::string_view name;
  std::int32_t PrinterFit::*member;
};
constexpr std::array kValues = {
    FitValue{"Versatz rechts", &PrinterFit::right}, FitValue{"Versatz unten", &PrinterFit::down},
    FitValue{"Breite", &PrinterFit::across}, FitValue{"Höhe", &PrinterFit::along}};

std::string KeyOf(std::string printer) {
  std::ranges::replace(printer, '\\', '/');
  return Format("%s\\%s\\Printers\\%s", kLocalMachine, kSettingsKey, printer);
}

// One direction: the printer stretches all by factor and moves it by shift.
struct Bent {
  double factor;
  double shift;  // millimetres
};
Bent BentOf(double mark, double line, double usualLine, double scale, double offset) {
  const double factor = line / (scale * usualLine);
  return {factor, mark - factor * (scale * kMarkPlace + offset)};
}

std::int32_t Rounded(double value) {
  constexpr double kFar = 1e6;
  return static_cast<std::int32_t>(std::lround(std::clamp(value, -kFar, kFar)));
}

}  // namespace

bool IsPossible(const PrinterFit& fit) {
  const auto within = [](std::int32_t value, std::int32_t usual, std::int32_t most) {
    return value >= usual - most && value <= usual + most;
  };
  return within(fit.right, 0, kMostFitOffset) && within(fit.down, 0, kMostFitOffset) &&
         within(fit.across, kFullFitScale, kMostFitStretch) &&
         within(fit.along, kFullFitScale, kMostFitStretch);
}

PrinterFit LoadPrinterFit(const Registry& registry, const std::string& printer) {
  const auto values = registry.Read(KeyOf(printer));
  if (!values) return {};
  PrinterFit fit;
  for (const FitValue& value : kValues) {
    const auto number = values->Integer(value.name);
    if (number && std::in_range<std::int32_t>(*number))
      fit.*value.member = static_cast<std::int32_t>(*number);
  }
  return IsPossible(fit) ? fit : PrinterFit{};
}

Outcome SavePrinterFit(Registry& registry, const std::string& printer, const PrinterFit& fit) {
  if (!fit.Changes()) return registry.DeleteKey(KeyOf(printer));
  RegistryValues values;
  for (const FitValue& value : kValues) values.SetInteger(value.name, fit.*value.member);
  return registry.Write(KeyOf(printer), values);
}

std::optional<PrinterFit> FitFrom(const CalibrationReading& reading, const PrinterFit& printedWith) {
  constexpr double kTenths = 10;
  if (!std::isfinite(reading.left) || !std::isfinite(reading.top) || !(reading.across > 0) ||
      !(reading.along > 0))
    return std::nullopt;
  const Bent across = BentOf(reading.left, reading.across, kAcrossLine,
                             double{1} * printedWith.across / kFullFitScale, printedWith.right / kTenths);
  const Bent along = BentOf(reading.top, reading.along, kAlongLine,
                            double{1} * printedWith.along / kFullFitScale, printedWith.down / kTenths);
  const PrinterFit fit{.right = Rounded(-across.shift / across.factor * kTenths),
                       .down = Rounded(-along.shift / along.factor * kTenths),
                       .across = Rounded(kFullFitScale / across.factor),
                       .along = Rounded(kFullFitScale / along.factor)};
  return IsPossible(fit) ? std::optional(fit) : std::nullopt;
}

}  // namespace ts5::artworker
