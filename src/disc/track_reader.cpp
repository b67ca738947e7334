#include "disc/track_reader.h"

#include <algorithm>
#include <vector>

namespace ts5::disc {
namespace {

constexpr int kMostReadings = 12;  // of one sector
constexpr std::size_t kKept = 4;   // different readings that are remembered

}  // namespace

TrackReader::TrackReader(CdDrive& drive, Lba end, std::int32_t offset)
    : drive_(drive), end_(end), offsetBytes_(offset * static_cast<std::int32_t>(kBytesPerFrame)) {
  const auto capabilities = drive.ReadCapabilities();
  errorPointers_ = capabilities && capabilities->c2Pointers;
}

std::uint32_t TrackReader::Read(Lba address, std::span<std::uint8_t> out, const CancelCheck& stopped) {
  if (offsetBytes_ == 0) return ReadSectors(address, out, stopped);
  constexpr auto kBytes = static_cast<std::int32_t>(kAudioSectorBytes);
  const std::int32_t sectors = (offsetBytes_ >= 0 ? offsetBytes_ : offsetBytes_ - kBytes + 1) / kBytes;
  const auto inside = static_cast<std::size_t>(offsetBytes_ - sectors * kBytes);
  Bytes more(out.size() + kAudioSectorBytes);
  Lba first = address + sectors;
  // Before the first sector and behind the last one there is silence.
  const auto whole = static_cast<std::int32_t>(more.size() / kAudioSectorBytes);
  const std::int32_t before = std::clamp(-kPregapSectors - first.value, 0, whole);
  const std::int32_t there = std::clamp(end_ - (first + before), 0, whole - before);
  if (there > 0) {
    const auto part = std::span(more).subspan(static_cast<std::size_t>(before) * kAudioSectorBytes,
                                              static_cast<std::size_t>(there) * kAudioSectorBytes);
    if (const std::uint32_t error = ReadSectors(first + before, part, stopped); error != 0) return error;
  }
  std::ranges::copy(ByteView(more).subspan(inside, out.size()), out.begin());
  return 0;
}

std::uint32_t TrackReader::ReadSectors(Lba address, std::span<std::uint8_t> out, const CancelCheck& stopped) {
  while (!out.empty()) {
    const std::size_t count = std::min<std::size_t>(out.size() / kAudioSectorBytes, kSectorsPerCommand);
    const auto part = out.first(count * kAudioSectorBytes);
    if (const std::uint32_t error = ReadPortion(address, part, stopped); error != 0) return error;
    address = address + static_cast<std::int32_t>(count);
    out = out.subspan(part.size());
  }
  return 0;
}

std::uint32_t TrackReader::ReadPortion(Lba address, std::span<std::uint8_t> out, const CancelCheck& stopped) {
  std::vector<bool> sound(out.size() / kAudioSectorBytes, true);
  if (errorPointers_) {
    if (Failed(drive_.ReadCdAudioChecked(address, out, sound))) sound.assign(sound.size(), false);
  } else if (Failed(drive_.ReadCdAudio(address, out, stopped))) {
    sound.assign(sound.size(), false);
  }
  for (std::size_t i = 0; i < sound.size(); ++i) {
    if (drive_.DiscChanged()) return engine::kDiscChanged;
    if (sound[i]) continue;
    const auto sector = out.subspan(i * kAudioSectorBytes, kAudioSectorBytes);
    const std::uint32_t error = ReadUntilAgreed(address + static_cast<std::int32_t>(i), sector, stopped);
    if (error != 0) return error;
  }
  return 0;
}

std::uint32_t TrackReader::ReadUntilAgreed(Lba address, std::span<std::uint8_t> sector,
                                           const CancelCheck& stopped) {
  std::vector<Bytes> readings;
  bool any = false;
  for (int reading = 0; reading < kMostReadings; ++reading) {
    if (stopped && stopped()) return engine::kStopped;
    // A drive that gives no error pointers is never sure.
    std::vector<bool> sound{errorPointers_};
    const Outcome read = errorPointers_ ? drive_.ReadCdAudioChecked(address, sector, sound)
                                        : drive_.ReadCdAudio(address, sector, stopped);
    if (Failed(read)) {
      if (ActionFor(drive_.LastSense()) == SenseAction::GiveUp) break;
      continue;
    }
    any = true;
    const Bytes now(sector.begin(), sector.end());
    if (sound[0] || std::ranges::find(readings, now) != readings.end()) return 0;
    if (readings.size() == kKept) readings.erase(readings.begin());
    readings.push_back(now);
  }
  if (drive_.DiscChanged()) return engine::kDiscChanged;
  if (!any) return engine::kSectorsUnreadable;
  ++doubtful_;
  return 0;
}

}  // namespace ts5::disc
