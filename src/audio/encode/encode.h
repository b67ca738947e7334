// One source encoded into one file by whatever encoder the settings choose, and the proof that it went well.
// The source is opened once for all of that:
//
//   auto source = EncodingSource::Open(path, settings);
//   EncodeFile(*source, target, settings);
//   ProveEncoding(*source, made, settings);
//   WriteEncodedAttributes(*source, made, settings, attributes);
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "audio/encode/encoder.h"
#include "audio/tags/attribute.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/files/files.h"

namespace ts5::encode {

class EncodingSource {
 public:
  // WrongFormat: a codec or the command line takes wave and AIFF files only; SourceNotOpened: so do the
  // others, and what cannot be opened at all. ReadFailed, OutOfMemory.
  [[nodiscard]] static Result<EncodingSource> Open(const std::string& path, const EncodeSettings& settings);

  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] const PcmShape& Shape() const { return pcm_->Shape(); }
  [[nodiscard]] const WaveFormat& Format() const { return format_; }
  [[nodiscard]] bool IsAiff() const { return aiff_; }
  [[nodiscard]] double Seconds() const;  // 0 where the file does not tell

  // Its samples from the start, in another shape. They use this source: one stream at a time, and none after
  // it has gone. FormatRefused: rates too far apart; codes of Open.
  [[nodiscard]] Result<std::unique_ptr<PcmSource>> Samples(std::uint32_t sampleRate, std::uint32_t channels);

 private:
  EncodingSource() = default;

  std::string path_;
  std::unique_ptr<PcmSource> pcm_;
  WaveFormat format_;
  bool aiff_ = false;
  bool read_ = false;  // somebody has had its samples
};

// Encodes into a staged file of the caller's. Samples of every depth, rate and number of channels become what
// the encoder takes; dithered where it takes 16 bits and they were finer. Codes of the encoder; SourceFailed:
// a source of no samples where the format has no file for that; ReadFailed, FormatRefused (a rate too far
// from the encoder's), Cancelled.
[[nodiscard]] Outcome EncodeFile(EncodingSource& source, StagedFile& target, const EncodeSettings& settings,
                                 const WorkWatch& watch = {});

// Whether the encoder does not take the samples as they are in the file: the source is AIFF, or an MP3 engine
// is to make another rate or other channels of it.
[[nodiscard]] bool IsConvertedFirst(const EncodingSource& source, const EncodeSettings& settings);

// Writes into the finished file what this system says of itself, what the job sets, and what the source says
// where the job sets nothing. AttributesNotWritten: at least one of the first two could not be written; the
// file is whole all the same. id3Version: 3 or 4, of MPEG files.
[[nodiscard]] Outcome WriteEncodedAttributes(EncodingSource& source, const std::string& made,
                                             const EncodeSettings& settings, const tags::Attributes& job,
                                             unsigned id3Version = 3);

// Where the music lies in a file of ours whose format does not tell it, by the attribute in which it was
// noted.
struct MusicPlace {
  std::uint64_t frames = 0;
  std::uint64_t delay = 0;
};
[[nodiscard]] std::optional<MusicPlace> NotedPlace(const tags::Attributes& attributes);

// Whether the settings want the proof: where they do not say so, for encoders of our own.
[[nodiscard]] bool WantsProof(const EncodeSettings& settings);
// Decodes what was made of the source and compares: lossless encoders bit by bit, the others by length, level
// and correlation. NotProven; codes of reading either file; Cancelled.
[[nodiscard]] Outcome ProveEncoding(EncodingSource& source, const std::string& made,
                                    const EncodeSettings& settings, const WorkWatch& watch = {});

}  // namespace ts5::encode
