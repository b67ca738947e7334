#include "frame/loss_remarks.h"

#include <algorithm>

#include "frame/texts.h"
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
  if (losses.size() <= kShownInLine) return Format(Text(texts::LossSummary), lines);
  return Format(Text(texts::LossSummaryMore), lines, losses.size() - kShownInLine);
}

}  // namespace

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
      result.remarks.push_back(Format(Text(texts::LossRemark), name, (*item.losses)[i].line));
    if (item.losses->size() > shown)
      result.remarks.push_back(Format(Text(texts::MoreLosses), name, item.losses->size() - shown));
  }
}

}  // namespace ts5
