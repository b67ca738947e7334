#include "frame/remarks.h"

#include <algorithm>

#include "frame/texts.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

using namespace texts;

// The small numbers are those of the score conversions.
constexpr Remark kConversionRemarks[] = {
    {-5, RemarkCancelled},
    {0, RemarkCancelled},
    {-1, RemarkLibraryFailed},
    {-2, RemarkOutOfMemory},
    {2, RemarkSourceFailed},
    {9, RemarkSourceFailed},
    {-300, RemarkSourceFailed},
    {3, RemarkDamagedMidi},
    {-601, RemarkDamagedMidi},
    {4, RemarkTargetFailed},
    {-200, RemarkTargetFailed},
    {5, RemarkOutOfMemory},
    {6, RemarkWrongFormat},
    {-104, RemarkWrongFormat},
    {7, RemarkReadFailed},
    {-100, RemarkReadFailed},
    {8, RemarkWriteFailed},
    {-101, RemarkWriteFailed},
    {0x10000, RemarkToStandardMidi, 1},
    {0x40000, RemarkToRiff, 1},
    {0x20000, RemarkToSequencer, 1},
    {0x80000, RemarkFormatRefused, 2},
    {0x100000, RemarkToFormat0, 2},
    {0x200000, RemarkToFormat1, 2},
    {0x400000, RemarkSameTimeBase, 3},
    {0x800000, RemarkTimeBaseChanged, 3, RemarkSegmentsNotMoved},
};

std::string LineOf(const Remark& remark, const RunStatus& status) {
  const std::string_view format = Text(remark.text);
  const std::int32_t number = status.number != 0 ? status.number : status.code;
  std::string line =
      format.find("%i") == std::string_view::npos ? std::string(format) : Format(format, number);
  if (status.extended && remark.appended) line.append(" ").append(Text(*remark.appended));
  return line;
}

}  // namespace

std::span<const Remark> ConversionRemarks() {
  return kConversionRemarks;
}

std::vector<std::string> RemarkLines(std::span<const Remark> table, const RunStatus& status) {
  if (!status.line.empty()) return {status.line};
  const auto whole = std::ranges::find_if(table, [&](const Remark& remark) {
    const bool other = remark.code == kEveryOtherFailure && status.code < 0;
    return remark.group == 0 && (remark.code == status.code || other);
  });
  if (whole != table.end()) return {LineOf(*whole, status)};

  std::vector<std::string> lines;
  if (status.code <= 0) return lines;
  std::uint8_t groups = 0;
  for (const Remark& remark : table) groups = std::max(groups, remark.group);
  for (std::uint8_t group = 1; group <= groups; ++group) {
    const auto row = std::ranges::find_if(table, [&](const Remark& remark) {
      return remark.group == group && (remark.code & status.code) != 0;
    });
    if (row != table.end()) lines.push_back(LineOf(*row, status));
  }
  return lines;
}

}  // namespace ts5
