#include "converters/item_losses.h"

#include <algorithm>

#include "converters/texts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::size_t kShownInLine = 3;
constexpr std::size_t kShownInRemarks = 20;  // of one file

// Of one file, as one line; "" without any.
std::string Summary(const std::vector<ItemLoss>& losses) {
  if (losses.empty()) return {};
  std::string lines;
  for (std::size_t i = 0; i < std::min(losses.size(), kShownInLine); ++i)
    lines += (i == 0 ? "" : "; ") + losses[i].line;
  if (losses.size() <= kShownInLine) return Format(Text(texts::XmlLossSummary), lines);
  return Format(Text(texts::XmlLossSummaryMore), lines, losses.size() - kShownInLine);
}

}  // namespace

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

Outcome WriteWithLosses(ItemWork& work, ByteView made, std::vector<ItemLoss> losses) {
  const Outcome written = work.target.Write(made);
  if (Failed(written)) return written;
  work.line = Summary(losses);
  work.losses = std::move(losses);
  return written;
}

void AddLossRemarks(RunResult& result) {
  for (const RunItem& item : result.items) {
    if (!item.losses || item.losses->empty()) continue;
    const std::string name(FileNameOf(item.source));
    const std::size_t shown = std::min(item.losses->size(), kShownInRemarks);
    for (std::size_t i = 0; i < shown; ++i)
      result.remarks.push_back(Format(Text(texts::XmlLossRemark), name, (*item.losses)[i].line));
    if (item.losses->size() > shown)
      result.remarks.push_back(Format(Text(texts::XmlMoreLosses), name, item.losses->size() - shown));
  }
}

}  // namespace ts5
