#include "frame/run_result.h"

#include <algorithm>

#include "frame/texts.h"
#include "platform/strings.h"

namespace ts5 {

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

std::size_t FailureCount(const RunResult& result) {
  return static_cast<std::size_t>(std::ranges::count_if(result.items, [](const RunItem& item) {
    return item.code < 0 && item.code != Code(Outcome::Cancelled);
  }));
}

}  // namespace ts5
