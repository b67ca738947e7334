#include "reference_matcher.h"

#include <algorithm>
#include <cmath>

namespace ts5::test {
namespace {

struct PlainEvent {
  std::uint64_t tick = 0;
  int status = 0;
  int key = 0;
  int velocity = 0;

  [[nodiscard]] bool IsNoteOn() const { return status >= 0x90 && status <= 0x9F && velocity > 0; }
  [[nodiscard]] bool IsDrums() const { return status < 0xF0 && status % 16 == 9; }
};

struct PlainTrack {
  std::vector<PlainEvent> events;
  bool damaged = true;
  std::uint64_t end = 0;
};

PlainTrack Parse(ByteView bytes) {
  PlainTrack track;
  std::size_t at = 0;
  std::uint64_t tick = 0;
  int running = 0;
  const auto quantity = [&](std::uint64_t& value) {
    value = 0;
    while (at < bytes.size()) {
      const int byte = bytes[at++];
      value = value * 128 + static_cast<std::uint64_t>(byte % 128);
      if (value > 0xFFFFFFFF) value = 0xFFFFFFFF;
      if (byte < 128) return true;
    }
    return false;
  };
  for (;;) {
    std::uint64_t delta = 0;
    if (!quantity(delta) || at == bytes.size()) return track;
    tick += delta;
    int status = bytes[at];
    if (status < 0x80) {
      status = running;
    } else {
      ++at;
    }
    if (status == 0xFF || status == 0xF0 || status == 0xF7) {
      if (status == 0xFF) {
        if (at == bytes.size()) return track;
        if (bytes[at++] == 0x2F) {
          track.end = tick;
          track.damaged = false;
          return track;
        }
      }
      std::uint64_t length = 0;
      if (!quantity(length) || length > bytes.size() - at) return track;
      at += length;
      continue;
    }
    if (status < 0x80 || status > 0xEF) return track;
    running = status;
    const std::size_t size = status >= 0xC0 && status <= 0xDF ? 1 : 2;
    if (bytes.size() - at < size) return track;
    track.events.push_back({tick, status, bytes[at], size == 2 ? bytes[at + 1] : 0});
    at += size;
  }
}

// Ticks to the next onset, -1 when the track breaks off before.
std::int64_t NextOnset(const PlainTrack& track, std::size_t event) {
  for (std::size_t i = event + 1; i < track.events.size(); ++i) {
    const std::uint64_t distance = track.events[i].tick - track.events[event].tick;
    if (track.events[i].IsNoteOn() && distance > 10) return static_cast<std::int64_t>(distance);
  }
  if (track.damaged) return -1;
  return static_cast<std::int64_t>(std::max<std::uint64_t>(track.end - track.events[event].tick, 10));
}

}  // namespace

ReferenceResult ReferenceSearch(ByteView bytes, std::int32_t trackNumber, const TrackContext& context) {
  const PlainTrack track = Parse(bytes);
  const auto& melody = context.melodies.front();
  const SearchOptions& options = context.options;
  const int p = static_cast<int>(options.tolerance) * 10;
  ReferenceResult result;
  std::size_t k = 0;
  int previousKey = 0;
  double factor = 1;
  double previousOnset = 0;
  double previousScaled = 0;
  SearchHit hit;
  for (std::size_t i = 0; i < track.events.size(); ++i) {
    const PlainEvent& event = track.events[i];
    if (event.IsDrums() && !options.drumTrack) return result;
    if (!event.IsNoteOn()) continue;
    for (bool again = true; again;) {
      again = false;
      if (k == 0) {
        const bool sameClass = event.key < 128 && event.key % 12 == melody[0].key % 12;
        if (options.pitch == PitchMode::Absolute && event.key != melody[0].key) break;
        if (options.pitch == PitchMode::AnyOctave && !sameClass) break;
      } else if (options.pitch != PitchMode::Ignore &&
                 melody[k].key - melody[k - 1].key != event.key - previousKey) {
        k = 0;
        again = true;
        continue;
      }
      const std::int64_t d = NextOnset(track, i);
      if (d < 0) {
        result.code = Outcome::DamagedMidi;
        return result;
      }
      if (k == 0) {
        factor = 1;
        if (options.rhythm == RhythmMode::Relative) {
          factor = double{static_cast<float>(melody[0].duration) / static_cast<float>(d)};
        }
        hit = {};
        hit.file = context.file;
        hit.track = trackNumber;
        hit.bar = static_cast<std::int32_t>(BarOf(context.signatures, context.division, event.tick));
        const double time =
            (1000.0 / context.division) * (60.0 / context.tempo) * static_cast<double>(event.tick);
        hit.time = static_cast<std::int32_t>(std::min(time, 2147483647.0));
      }
      const double s = std::trunc(static_cast<double>(d) * factor);
      const double wanted = melody[k].duration;
      const double tolerance = std::trunc(wanted * double{0.01F} * p);
      const bool durationFits = s >= wanted - tolerance && s <= wanted + tolerance;
      const double g = std::trunc((static_cast<double>(event.tick) - previousOnset) * factor);
      const double onsetTolerance = std::trunc(p * (previousScaled * 0.01));
      const bool onsetFits = g >= previousScaled - onsetTolerance && g <= previousScaled + onsetTolerance;
      const bool accepted = options.rhythm == RhythmMode::Any || k + 1 == melody.size() ||
                            (durationFits && (k == 0 || onsetFits));
      if (!accepted) {
        again = k > 0;
        k = 0;
        continue;
      }
      previousKey = event.key;
      previousOnset = static_cast<double>(event.tick);
      previousScaled = s;
      if (++k == melody.size()) {
        result.hits.push_back(hit);
        k = 0;
      }
    }
  }
  if (track.damaged) result.code = Outcome::DamagedMidi;
  return result;
}

}  // namespace ts5::test
