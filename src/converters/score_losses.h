// What a conversion could not carry over: by kind, bar and staff. Nothing is left out without a word here.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/base/strings.h"

namespace ts5 {
struct ScoreDocument;
struct ScoreMusic;
}  // namespace ts5

namespace ts5::converters {

struct ScoreLoss {
  TextId kind{};       // what it is, as a noun
  std::string detail;  // the name of the sign, where the kind does not say it
  int bar = -1;        // index of the bar; -1 of the whole score
  int staff = -1;      // index of the staff; -1 of all
  unsigned count = 1;
};

class LossReport {
 public:
  void Add(TextId kind, int bar = -1, int staff = -1, unsigned count = 1, std::string detail = {});
  void Add(const LossReport& other);
  // In the order of the score. More than kMostLosses rows are counted under the kind alone.
  static constexpr std::size_t kMostLosses = 2000;
  [[nodiscard]] const std::vector<ScoreLoss>& Rows() const { return rows_; }
  // Those alone for which it is true.
  template <typename Wanted>
  void Keep(const Wanted& wanted) {
    std::erase_if(rows_, [&wanted](const ScoreLoss& loss) { return !wanted(loss); });
  }
  [[nodiscard]] bool Empty() const { return rows_.empty(); }

  // Names for the places: printed bar numbers and staff names. Those that it has stay.
  void NamePlaces(std::vector<std::string> bars, std::vector<std::string> staves);
  void NamePlaces(const ScoreDocument& document, const ScoreMusic& music);
  [[nodiscard]] std::string BarName(const ScoreLoss& loss) const;    // "" for the whole score
  [[nodiscard]] std::string StaffName(const ScoreLoss& loss) const;  // "" for all staves
  // "Takt 12, Violine: 2 x Arpeggio"
  [[nodiscard]] std::string Line(const ScoreLoss& loss) const;

 private:
  std::vector<ScoreLoss> rows_;
  std::vector<std::string> bars_;
  std::vector<std::string> staves_;
};

}  // namespace ts5::converters
