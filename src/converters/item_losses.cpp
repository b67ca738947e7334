#include "converters/item_losses.h"

namespace ts5::converters {

std::vector<ItemLoss> ItemLosses(const LossReport& report) {
  std::vector<ItemLoss> losses;
  for (const ScoreLoss& loss : report.Rows()) {
    std::string kind(Text(loss.kind));
    if (!loss.detail.empty()) kind += " (" + loss.detail + ")";
    losses.push_back(
        {std::move(kind), report.BarName(loss), report.StaffName(loss), loss.count, report.Line(loss)});
  }
  return losses;
}

}  // namespace ts5::converters
