#include "platform/disc/disc_image.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <optional>
#include <utility>

#include "platform/base/text.h"
#include "platform/disc/cd_text.h"
#include "platform/disc/mmc_replies.h"
#include "platform/files/files.h"
#include "platform/files/input_file.h"
#include "platform/files/paths.h"
#include "platform/media/open_media.h"
#include "platform/media/wave_format.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMostSheetBytes = 1 << 20;

void PutSample(double sample, std::uint8_t* out) {
  const auto bits = static_cast<std::uint16_t>(Sample16(sample));
  out[0] = static_cast<std::uint8_t>(bits & 0xFF);
  out[1] = static_cast<std::uint8_t>(bits >> 8);
}

// The file that a sheet means: beside the sheet, by the name as it is written or without regard to case and
// to a directory of another machine.
std::string FileOfSheet(const std::string& directory, std::string name) {
  std::ranges::replace(name, '\\', '/');
  const std::string written = JoinPath(directory, name);
  if (FileExists(written)) return written;
  std::error_code error;
  const std::string wanted(FileNameOf(name));
  for (fs::directory_iterator entry(directory.empty() ? "." : directory, error), end; !error && entry != end;
       entry.increment(error)) {
    if (EqualsIgnoringCase(entry->path().filename().string(), wanted)) return entry->path().string();
  }
  return written;
}

}  // namespace

// The bytes of one file as they would lie on the disc.
class DiscImage::File {
 public:
  static Result<std::unique_ptr<File>> Open(const std::string& path, CueFile::Kind kind) {
    auto file = std::make_unique<File>();
    file->swapped_ = kind == CueFile::Kind::Motorola;
    if (kind != CueFile::Kind::Audio) {
      auto raw = InputFile::Open(path);
      if (!raw) return Failure(raw.error());
      file->raw_ = *std::move(raw);
      file->size_ = file->raw_.Size();
      return file;
    }
    auto audio = OpenMedia(path);
    if (!audio) return Failure(audio.error());
    const PcmShape& shape = (*audio)->Shape();
    const auto frames = (*audio)->Frames();
    if (shape.sampleRate != AudioCdFormat().sampleRate || shape.channels > 2 || !frames)
      return Failure(Outcome::WrongFormat);
    file->size_ = std::min(*frames, std::uint64_t{kMostSectors} * kFramesPerSector) * kBytesPerFrame;
    file->audio_ = *std::move(audio);
    return file;
  }

  [[nodiscard]] std::uint64_t Size() const { return size_; }

  // What lies behind the end is silence.
  Outcome Read(std::uint64_t offset, std::span<std::uint8_t> out) {
    const std::uint64_t there = offset < size_ ? std::min<std::uint64_t>(size_ - offset, out.size()) : 0;
    std::ranges::fill(out.subspan(there), std::uint8_t{0});
    const auto wanted = out.first(there);
    if (audio_) return Decode(offset / kBytesPerFrame, wanted);
    const auto got = raw_.ReadAt(offset, wanted);
    if (!got || *got != wanted.size()) return Outcome::ReadFailed;
    if (swapped_)
      for (std::size_t i = 0; i + 1 < out.size(); i += 2) std::swap(out[i], out[i + 1]);
    return Outcome::Success;
  }

 private:
  Outcome Decode(std::uint64_t frame, std::span<std::uint8_t> out) {
    if (frame != next_ && Failed(audio_->Seek(frame))) return Outcome::ReadFailed;
    next_ = frame;
    const std::size_t channels = audio_->Shape().channels;
    const std::size_t frames = out.size() / kBytesPerFrame;
    std::vector<double> samples(frames * channels);
    std::size_t done = 0;
    while (done < frames) {
      const auto got = audio_->Read(std::span(samples).subspan(done * channels));
      if (!got) return Outcome::ReadFailed;
      if (*got == 0) break;  // an estimated length: the rest is silence
      done += *got;
    }
    next_ += done;
    for (std::size_t i = 0; i < frames; ++i) {
      const std::size_t at = i * channels;
      PutSample(samples[at], &out[i * kBytesPerFrame]);
      PutSample(samples[at + channels - 1], &out[i * kBytesPerFrame + 2]);
    }
    return Outcome::Success;
  }

  InputFile raw_;
  std::unique_ptr<MediaReader> audio_;
  std::uint64_t size_ = 0;
  std::uint64_t next_ = 0;  // the frame that the decoder gives next
  bool swapped_ = false;
};

// Sectors in a row that come from one place.
struct DiscImage::Extent {
  std::uint32_t start = 0;
  std::uint32_t sectors = 0;
  bool audio = true;
  File* file = nullptr;  // nullptr: silence
  std::uint64_t offset = 0;
  std::uint32_t stride = 0;  // bytes of a sector in the file
};

// Lays the tracks of a sheet one behind the other.
class DiscImage::Builder {
 public:
  Builder(DiscImage& disc, const CueSheet& sheet) : disc_(disc), sheet_(sheet) {}

  Outcome Make() {
    disc_.origin_ = sheet_.pregapInFile ? static_cast<std::uint32_t>(kPregapSectors) : 0;
    DiscLayout& layout = disc_.layout_;
    const CueTrack* before = nullptr;
    for (const CueTrack& track : sheet_.tracks) {
      // What lies before the first index belongs to the track before, or is hidden before the first one.
      const CueTrack& owner = before != nullptr ? *before : track;
      if (!GoTo(track.pause.value_or(track.start), owner)) return Outcome::WrongFormat;
      if (before != nullptr) Silence(before->postgap, before->audio);
      const std::uint32_t end = sector_;
      Silence(track.pregap, track.audio);
      if (!GoTo(track.start, track)) return Outcome::WrongFormat;
      if (before != nullptr) {
        if (sector_ <= start_) return Outcome::WrongFormat;
        // A pause that begins where its track begins would leave the one before it nothing.
        layout.tracks.back().sectors = std::max(end, start_ + 1) - start_;
      }
      DiscTrack& entry = layout.tracks.emplace_back();
      entry.number = track.number;
      entry.control = static_cast<std::uint8_t>((track.audio ? 0 : kControlData) |
                                                (track.copyPermitted ? kControlCopyPermitted : 0) |
                                                (track.preEmphasis ? kControlPreEmphasis : 0));
      if (end < sector_ && (before == nullptr || end > start_)) entry.pause = AddressOf(end);
      entry.start = AddressOf(sector_);
      if (IsIsrc(track.isrc)) entry.isrc = track.isrc;
      start_ = sector_;
      before = &track;
    }
    RestOfFile(*before);
    Silence(before->postgap, before->audio);
    layout.leadOut = AddressOf(sector_);
    if (IsCatalogueNumber(sheet_.catalogue)) layout.catalogue = sheet_.catalogue;
    layout.cdText = CdTextPacks(Texts());
    if (overflow_ || sector_ <= start_) return Outcome::WrongFormat;
    // Before sector 0 the first track's pause begins by itself.
    if (!layout.tracks.front().pause && layout.tracks.front().start > Lba{0})
      layout.tracks.front().pause = AddressOf(0);
    layout.tracks.back().sectors = sector_ - start_;
    return layout.tracks.front().start < Lba{0} ? Outcome::WrongFormat : Outcome::Success;
  }

 private:
  [[nodiscard]] CdText Texts() const {
    CdText text{{sheet_.title, sheet_.performer}, sheet_.tracks.front().number, {}};
    for (const CueTrack& track : sheet_.tracks) text.tracks.push_back({track.title, track.performer});
    return text;
  }
  [[nodiscard]] Lba AddressOf(std::uint32_t sector) const {
    return {static_cast<std::int32_t>(sector) - static_cast<std::int32_t>(disc_.origin_)};
  }
  bool GoTo(CuePlace place, const CueTrack& owner) {
    while (file_ < place.file) RestOfFile(owner);
    if (place.sector < position_) return false;
    Add(place.sector - position_, owner);
    // A place behind the end of its file makes no disc.
    return offset_ <= disc_.files_[file_]->Size();
  }
  void RestOfFile(const CueTrack& owner) {
    const std::uint64_t size = disc_.files_[file_]->Size();
    const std::uint64_t left = size > offset_ ? size - offset_ : 0;
    const std::uint64_t sectors = (left + owner.sectorBytes - 1) / owner.sectorBytes;
    Add(static_cast<std::uint32_t>(std::min<std::uint64_t>(sectors, kMostSectors)), owner);
    if (file_ + 1 < disc_.files_.size()) {
      ++file_;
      position_ = 0;
      offset_ = 0;
    }
  }
  void Add(std::uint32_t sectors, const CueTrack& owner) {
    Append({sector_, sectors, owner.audio, disc_.files_[file_].get(), offset_, owner.sectorBytes});
    position_ += sectors;
    offset_ += std::uint64_t{sectors} * owner.sectorBytes;
  }
  void Silence(std::uint32_t sectors, bool audio) {
    Append({sector_, sectors, audio, nullptr, 0, static_cast<std::uint32_t>(kAudioSectorBytes)});
  }
  void Append(Extent extent) {
    if (extent.sectors == 0) return;
    if (extent.sectors > kMostSectors - sector_) {
      overflow_ = true;
      return;
    }
    disc_.extents_.push_back(extent);
    sector_ += extent.sectors;
  }

  DiscImage& disc_;
  const CueSheet& sheet_;
  std::size_t file_ = 0;
  std::uint32_t position_ = 0;  // sectors of the file that are laid out
  std::uint64_t offset_ = 0;    // the same in bytes
  std::uint32_t sector_ = 0;
  std::uint32_t start_ = 0;  // of the last track
  bool overflow_ = false;
};

DiscImage::DiscImage() = default;
DiscImage::DiscImage(DiscImage&&) noexcept = default;
DiscImage& DiscImage::operator=(DiscImage&&) noexcept = default;
DiscImage::~DiscImage() = default;

Result<DiscImage> DiscImage::Open(const std::string& cuePath) {
  const auto text = ReadFile(cuePath, kMostSheetBytes);
  if (!text) return Failure(text.error() == Outcome::ReadFailed ? Outcome::WrongFormat : text.error());
  const auto sheet = CueSheet::Parse(AsText(*text));
  if (!sheet) return Failure(sheet.error());

  DiscImage disc;
  const std::string directory(DirectoryOf(cuePath));
  for (const CueFile& cueFile : sheet->files) {
    auto file = File::Open(FileOfSheet(directory, cueFile.name), cueFile.kind);
    if (!file) return Failure(file.error());
    disc.files_.push_back(*std::move(file));
  }
  if (const Outcome made = Builder(disc, *sheet).Make(); Failed(made)) return Failure(made);
  return disc;
}

Outcome DiscImage::ReadAudio(Lba address, std::span<std::uint8_t> out) {
  std::uint32_t sector = static_cast<std::uint32_t>(address.value) + origin_;
  auto extent = std::ranges::upper_bound(extents_, sector, {}, &Extent::start);
  if (out.size() % kAudioSectorBytes != 0 || extent == extents_.begin()) return Outcome::InvalidParameter;
  for (--extent; !out.empty(); ++extent) {
    if (extent == extents_.end() || !extent->audio || sector - extent->start >= extent->sectors)
      return Outcome::InvalidParameter;
    std::uint32_t index = sector - extent->start;
    const std::uint32_t count =
        std::min(static_cast<std::uint32_t>(out.size() / kAudioSectorBytes), extent->sectors - index);
    const auto part = out.first(count * kAudioSectorBytes);
    if (extent->file == nullptr) {
      std::ranges::fill(part, std::uint8_t{0});
    } else if (extent->stride == kAudioSectorBytes) {
      const Outcome read = extent->file->Read(extent->offset + std::uint64_t{index} * extent->stride, part);
      if (Failed(read)) return read;
    } else {
      for (std::uint32_t i = 0; i < count; ++i, ++index) {
        const Outcome read = extent->file->Read(extent->offset + std::uint64_t{index} * extent->stride,
                                                part.subspan(i * kAudioSectorBytes, kAudioSectorBytes));
        if (Failed(read)) return read;
      }
    }
    out = out.subspan(part.size());
    sector += count;
  }
  return Outcome::Success;
}

}  // namespace ts5
