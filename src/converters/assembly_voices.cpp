#include "converters/assembly_voices.h"

#include <numeric>

#include "converters/texts.h"
#include "platform/base/text.h"

namespace ts5::converters::musicxml {

bool PartVoices::VoiceBefore::operator()(const std::string& a, const std::string& b) const {
  const auto x = ParseInteger(a);
  const auto y = ParseInteger(b);
  if (x && y) return *x != *y ? *x < *y : a < b;
  if (x || y) return x.has_value();
  return a < b;
}

void PartVoices::NameVoices() {
  names_.resize(place_.part.staves);
  const Group* before = nullptr;
  for (std::size_t i = 0; i < place_.part.groups.Size(); ++i) {
    const Group& group = place_.part.groups[i];
    if (before == nullptr || before->staff != group.staff || before->voice != group.voice)
      names_[group.staff].try_emplace(group.voice);
    before = &group;
  }
  for (auto& names : names_) {
    std::size_t number = 0;
    for (auto& [name, slot] : names) slot = number++;
  }
}

std::size_t PartVoices::SlotOf(std::size_t staff, const std::string& voice) const {
  if (names_[staff].size() == 1 && names_[staff].begin()->first == voice) return 0;
  const auto found = names_[staff].find(voice);
  return found == names_[staff].end() ? names_[staff].size() : found->second;
}

std::span<const std::size_t> PartVoices::Groups(std::size_t measure, std::size_t staff,
                                                std::size_t slot) const {
  if (slot >= voices_[staff].size()) return {};
  const Voice& voice = voices_[staff][slot];
  if (measure >= voice.begins.size()) return {};
  const std::size_t begin = voice.begins[measure];
  const std::size_t end = measure + 1 < voice.begins.size() ? voice.begins[measure + 1] : voice.groups.size();
  return std::span(voice.groups).subspan(begin, end - begin);
}

bool PartVoices::Allot(const CancelCheck& cancelled) {
  NameVoices();
  const Part& part = place_.part;
  voices_.assign(part.staves, std::vector<Voice>(1));
  std::vector<VoiceEnds> ends(part.staves);
  std::vector<std::size_t> order;
  const auto startOf = [&part](std::size_t i) { return part.groups[i].start; };
  for (std::size_t m = 0; m < part.measures.size(); ++m) {
    if (m % kBarsBetween == 0 && cancelled && cancelled()) return false;
    const Measure& measure = part.measures[m];
    std::ranges::fill(ends, VoiceEnds{});
    order.resize(measure.groups);
    std::iota(order.begin(), order.end(), measure.first);
    if (!std::ranges::is_sorted(order, {}, startOf)) std::ranges::stable_sort(order, {}, startOf);
    for (const std::size_t index : order) Place(index, m, ends[part.groups[index].staff]);
  }
  return true;
}

// The voice of its number, or another that is free, where groups overlap.
void PartVoices::Place(std::size_t index, std::size_t measure, VoiceEnds& ends) {
  Group& group = place_.part.groups[index];
  std::size_t slot = SlotOf(group.staff, group.voice);
  if (slot >= kMaxVoices || ends[slot] > group.start) {
    // A rest is no music that another voice would be needed for.
    if (group.item.group.isRest) return;
    slot = 0;
    while (slot < kMaxVoices && ends[slot] > group.start) ++slot;
    place_.Lose(slot == kMaxVoices ? texts::LossVoice : texts::LossOverlap, measure, group.staff);
    if (slot == kMaxVoices) return;
  }
  ends[slot] = group.start + group.length;
  group.slot = slot;
  group.placed = true;
  auto& voices = voices_[group.staff];
  if (voices.size() <= slot) voices.resize(slot + 1);
  Voice& voice = voices[slot];
  voice.begins.resize(measure + 1, voice.groups.size());
  voice.groups.push_back(index);
  group.chord = voice.chords.size();
  if (!group.item.group.isRest) voice.chords.push_back({place_.bars.starts[measure] + group.start, index});
}

}  // namespace ts5::converters::musicxml
