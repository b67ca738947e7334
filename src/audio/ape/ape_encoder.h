// Monkey's Audio files, version 3.99 (the current layout: descriptor, header, seek table, MD5), made in one
// pass: blocks of samples in, bytes out. No files, no threads; memory for one frame.
//
//   auto encoder = ape::Encoder::Create({44100, 2, 16, ape::Level::High}, blocks);
//   encoder->Begin(bytes);            // keeps a place for the head
//   encoder->Add(interleaved, bytes); // as often as there are samples
//   encoder->Finish(bytes);
//   encoder->Head();                  // to be written over the start
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "audio/ape/ape_format.h"
#include "platform/files/md5.h"

namespace ts5::ape {

class Encoder {
 public:
  // blocks: how many sample frames will come at most; nothing when that is not known, which reserves a seek
  // table for the longest file (29 KB). FormatRefused: another depth or channel count, or more samples than a
  // file can hold (2 GiB).
  [[nodiscard]] static Result<Encoder> Create(const Format& format, std::optional<std::uint64_t> blocks);

  // Each appends to out what has become ready.
  void Begin(Bytes& out) const;
  // Whole sample frames, each sample within its depth (8 bits: -128..127). FormatRefused: more than were
  // announced, or than a file can hold; the file is of no use then.
  [[nodiscard]] Outcome Add(std::span<const std::int32_t> interleaved, Bytes& out);
  void Finish(Bytes& out);

  // After Finish: the bytes that belong over the start of the file, as many as Begin kept free.
  [[nodiscard]] Bytes Head();

 private:
  Encoder(const Format& format, std::uint64_t mostBlocks);
  [[nodiscard]] std::size_t HeadSize() const { return kDescriptorSize + kHeaderSize + seekTableSize_; }
  void CloseFrame(Bytes& out);
  void WriteWords(Bytes& out, bool all);

  Format format_;
  std::uint64_t mostBlocks_;
  std::size_t seekTableSize_;
  std::vector<std::int32_t> frame_;   // samples that wait for their frame to be full
  std::vector<std::uint32_t> seeks_;  // where each frame begins in the file
  Bytes ready_;                       // coded, and not yet a whole word
  Totals totals_;
  Md5Sum md5_;
};

}  // namespace ts5::ape
