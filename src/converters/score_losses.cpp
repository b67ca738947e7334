#include "converters/score_losses.h"

#include <algorithm>
#include <tuple>

#include "converters/texts.h"
#include "platform/base/text.h"
#include "score/score_bars.h"

namespace ts5::converters {

void LossReport::Add(TextId kind, int bar, int staff, unsigned count, std::string detail) {
  const auto key = [](const ScoreLoss& loss) {
    return std::tie(loss.bar, loss.staff, loss.kind, loss.detail);
  };
  if (rows_.size() >= kMostLosses) bar = staff = -1;
  const ScoreLoss added{kind, std::move(detail), bar, staff, count};
  const auto place = std::ranges::lower_bound(
      rows_, added, [&](const ScoreLoss& a, const ScoreLoss& b) { return key(a) < key(b); });
  if (place != rows_.end() && key(*place) == key(added)) {
    place->count += count;
  } else {
    rows_.insert(place, added);
  }
}

void LossReport::Add(const LossReport& other) {
  for (const ScoreLoss& loss : other.rows_) Add(loss.kind, loss.bar, loss.staff, loss.count, loss.detail);
  if (bars_.empty()) bars_ = other.bars_;
  if (staves_.empty()) staves_ = other.staves_;
}

void LossReport::NamePlaces(std::vector<std::string> bars, std::vector<std::string> staves) {
  if (bars_.empty()) bars_ = std::move(bars);
  if (staves_.empty()) staves_ = std::move(staves);
}

void LossReport::NamePlaces(const ScoreDocument& document, const ScoreMusic& music) {
  std::vector<std::string> bars(music.bars.size());
  std::ranges::transform(music.bars, bars.begin(), &ScoreBar::number);
  std::vector<std::string> staves(document.staves.size());
  std::ranges::transform(document.staves, staves.begin(), &StaffLayout::name);
  NamePlaces(std::move(bars), std::move(staves));
}

std::string LossReport::BarName(const ScoreLoss& loss) const {
  if (loss.bar < 0) return {};
  const auto index = static_cast<std::size_t>(loss.bar);
  if (index < bars_.size() && !bars_[index].empty()) return bars_[index];
  return std::to_string(loss.bar + 1);
}

std::string LossReport::StaffName(const ScoreLoss& loss) const {
  if (loss.staff < 0) return {};
  const auto index = static_cast<std::size_t>(loss.staff);
  if (index < staves_.size() && !staves_[index].empty()) return staves_[index];
  return Format(Text(texts::LossStaff), loss.staff + 1);
}

std::string LossReport::Line(const ScoreLoss& loss) const {
  std::string what(Text(loss.kind));
  if (!loss.detail.empty()) what += " (" + loss.detail + ")";
  if (loss.count > 1) what = Format(Text(texts::LossCount), loss.count, what);
  if (loss.bar < 0) return what;
  const std::string bar = Format(Text(texts::LossBar), BarName(loss));
  if (loss.staff < 0) return bar + ": " + what;
  return bar + ", " + StaffName(loss) + ": " + what;
}

}  // namespace ts5::converters
