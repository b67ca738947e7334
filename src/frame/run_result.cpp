#include "frame/run_result.h"

#include <algorithm>
#include <tuple>

#include "frame/texts.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"

namespace ts5 {

bool RunResult::operator==(const RunResult& other) const {
  const auto shown = [](const RunResult& r) {
    return std::tie(r.filter, r.titles, r.counts, r.items, r.remarks, r.show, r.cancelButton, r.cancelled);
  };
  return shown(*this) == shown(other);
}

ItemEnd EndOf(const RunItem& item) {
  if (item.code >= 0) return item.unchanged ? ItemEnd::Unchanged : ItemEnd::Succeeded;
  return item.code == Code(Outcome::Cancelled) ? ItemEnd::Cancelled : ItemEnd::Failed;
}

std::size_t FailureCount(const RunResult& result) {
  return static_cast<std::size_t>(std::ranges::count(result.items, ItemEnd::Failed, EndOf));
}

void CountItems(RunResult& result, std::size_t sources) {
  const auto successes = static_cast<std::size_t>(
      std::ranges::count_if(result.items, [](const RunItem& item) { return item.code >= 0; }));
  result.counts[0] = ClampTo<std::uint32_t>(successes);
  result.counts[1] = ClampTo<std::uint32_t>(sources - std::min(sources, successes));
}

std::string_view TitleText(const RunResult& result) {
  return Text(result.titles.title);
}

std::array<RunLine, kRunCounts> Lines(const RunResult& result) {
  std::array<RunLine, kRunCounts> lines;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const auto& label = result.titles.labels[i];
    if (label) lines[i] = {Text(*label), result.counts[i]};
  }
  return lines;
}

std::string RemarksText(const RunResult& result) {
  if (result.remarks.empty()) return std::string(Text(texts::NoRemarks));
  std::string text;
  for (const std::string& remark : result.remarks) {
    const std::size_t size = text.size() + (text.empty() ? 0 : 2) + remark.size();
    if (size > kMaxRemarksBytes) break;
    if (!text.empty()) text += "\r\n";
    text += remark;
  }
  if (!text.empty()) return text;
  // Cut before the bytes that continue a character.
  std::size_t end = kMaxRemarksBytes;
  const std::string& first = result.remarks.front();
  while (end > 0 && (static_cast<unsigned char>(first[end]) & 0xC0U) == 0x80U) --end;
  return first.substr(0, end);
}

std::string_view EndText(ItemEnd end) {
  constexpr std::array kTexts = {texts::ItemSucceeded, texts::ItemUnchanged, texts::ItemFailed,
                                 texts::ItemCancelled};
  return Text(kTexts.at(static_cast<std::size_t>(end)));
}

std::string ReasonText(const RunItem& item) {
  std::string text = item.remark;
  if (text.empty() && item.code < 0) text = Format(Text(texts::ItemCode), item.code);
  if (!item.reason.empty()) text += (text.empty() ? "" : " ") + item.reason;
  return text;
}

}  // namespace ts5
