#include "score/page_layout.h"

#include <algorithm>
#include <string_view>

namespace ts5 {
namespace {

constexpr std::string_view kMark = "TS5";
constexpr std::size_t kPageBytes = 15;
constexpr std::uint8_t kSlashes = 1;
constexpr std::uint8_t kNumbers = 2;
constexpr std::uint8_t kBeamBytes = 2;
constexpr std::uint8_t kForward = 1;    // hooks point to the next chord
constexpr std::uint8_t kFirstFlag = 3;  // duration code of an eighth
constexpr std::uint8_t kMostFlags = 6;

std::uint8_t Count(const std::string& beams, std::string_view letters) {
  const auto count =
      std::ranges::count_if(beams, [letters](char c) { return letters.find(c) != std::string_view::npos; });
  return static_cast<std::uint8_t>(std::min<std::ptrdiff_t>(count, kMostFlags));
}

// Where the last item begins; 0 when what is there are no items.
std::size_t LastItem(const Bytes& parameters) {
  std::size_t last = 0;
  for (std::size_t at = 1; at < parameters.size();) {
    if (at + 2 > parameters.size()) return 0;
    last = at;
    at += 2U + (parameters[at] == 1 ? 2U : parameters[at + 1]);
    if (at > parameters.size()) return 0;
  }
  return last;
}

}  // namespace

Bytes PageItem(const ScorePageLayout& page) {
  ByteWriter out;
  out.Append(kMark);
  out.U16Le(page.narrowLines);
  out.U16Le(page.normalLines);
  for (const std::uint8_t value : {page.above, page.below, page.betweenSystems, page.beforeFirst})
    out.U8(value);
  out.U8(static_cast<std::uint8_t>((page.slashes ? kSlashes : 0) | (page.barNumbers ? kNumbers : 0)));
  for (const std::uint8_t value : {page.justify, page.barsPerSystem, page.beaming}) out.U8(value);
  return out.Release();
}

void TakePageItem(ByteView item, ScorePageLayout& page) {
  if (item.size() != kPageBytes || !AsText(item).starts_with(kMark)) return;
  ByteReader in(item.subspan(kMark.size()));
  page.given = true;
  page.narrowLines = in.U16Le();
  page.normalLines = in.U16Le();
  for (std::uint8_t* value : {&page.above, &page.below, &page.betweenSystems, &page.beforeFirst})
    *value = in.U8();
  const std::uint8_t flags = in.U8();
  page.slashes = (flags & kSlashes) != 0;
  page.barNumbers = (flags & kNumbers) != 0;
  for (std::uint8_t* value : {&page.justify, &page.barsPerSystem, &page.beaming}) *value = in.U8();
}

Bytes WithBeams(Bytes parameters, const std::string& beams) {
  if (beams.empty()) return parameters;
  if (parameters.empty()) parameters.push_back(0);
  const std::uint8_t before = Count(beams, "ce");
  const std::uint8_t next = Count(beams, "bc");
  const std::uint8_t forward = Count(beams, "f") > 0 ? kForward : std::uint8_t{0};
  const Bytes item = {kBeamItem, kBeamBytes, static_cast<std::uint8_t>(before << 4 | next), forward};
  parameters.insert(parameters.end(), item.begin(), item.end());
  return parameters;
}

std::string TakeBeams(Bytes& parameters, std::uint8_t durationCode) {
  const std::size_t at = LastItem(parameters);
  if (at == 0 || at + 2 + kBeamBytes != parameters.size() || parameters[at] != kBeamItem ||
      parameters[at + 1] != kBeamBytes)
    return {};
  const unsigned before = parameters[at + 2] >> 4;
  const unsigned next = parameters[at + 2] & 15U;
  if (before > kMostFlags || next > kMostFlags) return {};
  const bool forward = (parameters[at + 3] & kForward) != 0;
  parameters.resize(at);
  if (at == 1 && parameters[0] == 0) parameters.clear();
  if (before == 0 && next == 0) return "-";
  const unsigned flags = durationCode >= kFirstFlag && durationCode < kFirstFlag + kMostFlags
                             ? durationCode - kFirstFlag + 1U
                             : 0U;
  std::string beams;
  for (unsigned level = 1; level <= std::max({flags, before, next}); ++level) {
    const bool left = level <= before;
    const bool right = level <= next;
    beams += left && right ? 'c' : left ? 'e' : right ? 'b' : forward ? 'f' : 'h';
  }
  return beams;
}

}  // namespace ts5
