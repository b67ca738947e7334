#include "preview/system_places.h"

#include <algorithm>

namespace ts5::preview {
namespace {

double Decimal(Fraction value) {
  return static_cast<double>(value.Numerator()) / static_cast<double>(value.Denominator());
}

}  // namespace

double SystemPlaces::X(const Engraving& engraving, Fraction at) const {
  const std::size_t bar = std::clamp<std::size_t>(BarAt(engraving.music, at), first, last - 1);
  const std::size_t index = bar - first;
  const BarWidth& width = engraving.bars[bar];
  const double begin = bars[index] + (index == 0 ? 0.0 : width.prefix);
  const auto place = [&](const Column& column) { return begin + (column.x - width.prefix) * stretch; };
  const auto next = std::ranges::upper_bound(width.columns, at, {}, &Column::at);
  if (next == width.columns.begin()) return place(*next);
  const Column& before = *std::prev(next);
  if (before.at == at) return place(before);
  const ScoreBar& own = engraving.music.bars[bar];
  const Fraction until = next == width.columns.end() ? own.start + own.length : next->at;
  const double end = next == width.columns.end() ? bars[index + 1] - 0.6 : place(*next);
  if (at >= until) return end;
  return place(before) + (end - place(before)) * Decimal(at - before.at) / Decimal(until - before.at);
}

double PrefixWidth(const Engraving& engraving, std::size_t bar) {
  double key = 0;
  bool time = bar == 0;
  const ScoreBar& own = engraving.music.bars[bar];
  for (std::size_t staff = 0; staff < engraving.signs.size(); ++staff) {
    int sharps = engraving.signs[staff][bar].key;
    const auto& changes = engraving.music.changes[staff];
    auto change = std::ranges::lower_bound(changes, own.start, {}, &ScoreChange::at);
    for (; change != changes.end() && change->at == own.start; ++change) {
      if (change->item->Is(ObjectKind::Key)) sharps = change->item->key;
      if (change->item->Is(ObjectKind::Time)) time = true;
    }
    key = std::max(key, KeyWidth(sharps, 0));
  }
  return kSystemStart + kClefWidth + key + (time ? kTimeWidth : 0.0) + (own.repeatStart ? 1.4 : 0.0);
}

}  // namespace ts5::preview
