#include "frame/practice.h"

#include <algorithm>
#include <iterator>

#include "platform/base/strings.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr std::int64_t kLongestTitle = 1000LL * 3600 * 24 * 30;  // milliseconds that a place may have
constexpr std::int64_t kMostTracks = 65'536;

std::string ListOf(std::string_view name, const std::set<std::uint32_t>& tracks) {
  std::string text;
  for (const std::uint32_t track : tracks)
    text += (text.empty() ? std::string(name) + '=' : ",") + std::to_string(track);
  return text;
}

std::set<std::uint32_t> ParseTracks(std::string_view text) {
  std::set<std::uint32_t> tracks;
  for (const auto& part : Split(text, ',')) {
    const auto track = ParseInteger(part);
    if (track && *track >= 0 && *track < kMostTracks) tracks.insert(static_cast<std::uint32_t>(*track));
  }
  return tracks;
}

std::int64_t Milliseconds(nanoseconds time) {
  return std::chrono::duration_cast<milliseconds>(time).count();
}

}  // namespace

Practice Limited(Practice practice, nanoseconds duration, std::size_t tracks) {
  practice.speed = std::clamp(practice.speed, kSlowestPractice, kFastestPractice);
  practice.shift = std::clamp(practice.shift, -kFarthestShift, kFarthestShift);
  for (auto* const chosen : {&practice.muted, &practice.solo})
    std::erase_if(*chosen, [tracks](std::uint32_t track) { return track >= tracks; });
  if (auto& passage = practice.passage) {
    passage->from = std::max(passage->from, nanoseconds{0});
    passage->to = std::min(passage->to, duration);
    if (passage->to - passage->from < kShortestPassage) passage.reset();
  }
  return practice;
}

nanoseconds PassageBegin(nanoseconds place, std::span<const nanoseconds> bars) {
  const auto next = std::ranges::upper_bound(bars, place);
  return next == bars.begin() ? place : *std::prev(next);
}

nanoseconds PassageEnd(nanoseconds place, nanoseconds duration, std::span<const nanoseconds> bars) {
  if (bars.empty()) return std::min(place, duration);
  const auto next = std::ranges::upper_bound(bars, place);
  return next == bars.end() ? duration : *next;
}

std::string PracticeText(const Practice& practice) {
  std::string text;
  const auto add = [&text](const std::string& part) {
    if (!part.empty()) text += (text.empty() ? "" : " ") + part;
  };
  if (practice.passage) {
    add("A=" + std::to_string(Milliseconds(practice.passage->from)));
    add("B=" + std::to_string(Milliseconds(practice.passage->to)));
  }
  if (practice.speed != kOwnTempo) add("speed=" + std::to_string(practice.speed));
  if (practice.shift != 0) add("shift=" + std::to_string(practice.shift));
  add(ListOf("mute", practice.muted));
  add(ListOf("solo", practice.solo));
  return text;
}

Practice ParsePractice(std::string_view text) {
  Practice practice;
  PracticePassage passage;
  bool from = false;
  bool to = false;
  for (const auto& part : Split(text, ' ')) {
    const std::string_view row(part);
    const std::size_t equals = row.find('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view name = row.substr(0, equals);
    const std::string_view value = row.substr(equals + 1);
    if (name == "mute") practice.muted = ParseTracks(value);
    if (name == "solo") practice.solo = ParseTracks(value);
    const auto number = ParseInteger(value);
    if (!number) continue;
    const milliseconds place(std::clamp<std::int64_t>(*number, 0, kLongestTitle));
    if (name == "A") {
      passage.from = place;
      from = true;
    } else if (name == "B") {
      passage.to = place;
      to = true;
    } else if (name == "speed") {
      practice.speed =
          static_cast<int>(std::clamp<std::int64_t>(*number, kSlowestPractice, kFastestPractice));
    } else if (name == "shift") {
      practice.shift = static_cast<int>(std::clamp<std::int64_t>(*number, -kFarthestShift, kFarthestShift));
    }
  }
  if (from && to && passage.to - passage.from >= kShortestPassage) practice.passage = passage;
  return practice;
}

}  // namespace ts5
