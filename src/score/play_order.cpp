#include "score/play_order.h"

#include <algorithm>
#include <bit>

namespace ts5 {
namespace {

constexpr unsigned kMostJumps = 64;

class Walk {
 public:
  explicit Walk(const ScoreMusic& music) : bars_(music.bars) {}

  std::vector<PlayedBar> Go() {
    while (at_ < bars_.size() && order_.size() < kMaxPlayedBars && !over_) {
      const ScoreBar& bar = bars_[at_];
      if (bar.repeatStart && at_ != start_) Begin(at_);
      if (pass_ > 1 && bar.endings == 0 && inEndings_) Begin(behindFirst_);
      inEndings_ = bar.endings != 0;
      if (Skips(bar)) {
        ++at_;
        continue;
      }
      order_.push_back({at_, pass_});
      at_ = Next(bar);
    }
    return std::move(order_);
  }

 private:
  // The highest number of the endings that stand together with the one of this bar.
  [[nodiscard]] unsigned LastEnding(std::size_t bar) const {
    std::uint32_t numbers = 0;
    for (std::size_t i = bar; i < bars_.size() && bars_[i].endings != 0; ++i) numbers |= bars_[i].endings;
    return numbers == 0 ? 0 : static_cast<unsigned>(std::bit_width(numbers)) - 1;
  }

  [[nodiscard]] bool Skips(const ScoreBar& bar) const {
    if (bar.endings == 0) return false;
    const unsigned wanted = jumped_ ? LastEnding(at_) : pass_;
    // An ending whose number no pass has is played where it stands.
    const bool ahead = wanted > static_cast<unsigned>(std::bit_width(bar.endings)) - 1;
    return (bar.endings >> wanted & 1U) == 0 && ahead;
  }

  void Begin(std::uint32_t start) {
    start_ = start;
    pass_ = 1;
  }

  std::uint32_t Next(const ScoreBar& bar) {
    if (bar.repeatEnd && !jumped_) {
      if (pass_ < std::max(bar.passes, LastEnding(at_))) {
        if (pass_ == 1) behindFirst_ = at_ + 1;
        ++pass_;
        inEndings_ = false;
        return start_;
      }
      Begin(bar.endings == 0 ? at_ + 1 : behindFirst_);
    }
    return Jump(bar);
  }

  std::uint32_t Jump(const ScoreBar& bar) {
    const auto has = [&bar](std::uint8_t jump) { return (bar.jumps & jump) != 0; };
    if (jumped_) {
      over_ = has(kJumpFine);
      if (!has(kJumpToCoda)) return at_ + 1;
      jumped_ = false;
      Begin(coda_);
      return coda_;
    }
    std::uint32_t target = at_ + 1;
    if (has(kJumpDaCapo)) target = 0;
    if (has(kJumpDalSegno)) target = Segno();
    if (target > at_ || ++jumps_ > kMostJumps) return at_ + 1;
    coda_ = Coda();
    jumped_ = true;
    Begin(target);
    return target;
  }

  [[nodiscard]] std::uint32_t Segno() const {
    for (std::uint32_t i = at_ + 1; i-- > 0;) {
      if ((bars_[i].jumps & kJumpSegno) != 0) return i;
    }
    return at_ + 1;
  }

  // Its sign stands behind the jump; else what follows the jump is the coda.
  [[nodiscard]] std::uint32_t Coda() const {
    for (std::uint32_t i = at_ + 1; i < bars_.size(); ++i) {
      if ((bars_[i].jumps & kJumpCoda) != 0) return i;
    }
    return at_ + 1;
  }

  const std::vector<ScoreBar>& bars_;
  std::vector<PlayedBar> order_;
  std::uint32_t at_ = 0;
  std::uint32_t start_ = 0;
  std::uint32_t behindFirst_ = 0;  // the first repeat end of the section
  std::uint32_t coda_ = 0;
  unsigned pass_ = 1;
  unsigned jumps_ = 0;
  bool inEndings_ = false;
  bool jumped_ = false;
  bool over_ = false;
};

}  // namespace

std::vector<PlayedBar> PlayOrder(const ScoreMusic& music, bool repeats) {
  if (repeats) return Walk(music).Go();
  std::vector<PlayedBar> order(music.bars.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) order[i].bar = i;
  return order;
}

}  // namespace ts5
