// Music to encode, and what comes out of files.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "audio/encode/decompressor.h"
#include "audio/encode/encode.h"
#include "audio/sample_codec.h"
#include "audio/wave_file.h"
#include "audio/wave_stream.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5::test {

// Three tones and a little noise, different on each channel, loud enough to be told from everything else.
inline std::vector<double> Music(std::size_t frames, std::uint32_t channels, std::uint32_t rate) {
  std::vector<double> samples;
  std::uint32_t noise = 1;
  for (std::size_t i = 0; i < frames; ++i) {
    for (std::uint32_t c = 0; c < channels; ++c) {
      const double t = static_cast<double>(i) / rate;
      noise = noise * 1664525 + 1013904223;
      const double tones = std::sin(t * 2764 * (c + 1)) + std::sin(t * 4147) + std::sin(t * (500 + 3000 * t));
      samples.push_back(0.25 * tones + 1e-3 * (static_cast<double>(noise >> 8) / (1 << 23) - 1));
    }
  }
  return samples;
}

inline std::string WriteMusic(const TemporaryDirectory& place, const std::string& name,
                              const WaveFormat& format, std::size_t frames, double level = 1) {
  const std::string path = place.File(name);
  auto file = WaveFile::Create(path, format);
  EXPECT_THAT(file, IsOk());
  Bytes bytes(frames * format.blockAlign);
  std::vector<double> music = Music(frames, format.channels, format.sampleRate);
  for (double& sample : music) sample *= level;
  SampleEncoder(*SampleTypeOf(format), false).Encode(music, bytes);
  EXPECT_THAT(file->Write(bytes), IsOk());
  EXPECT_THAT(file->Close(), IsOk());
  return path;
}

// A source opened for one purpose only.
inline Outcome EncodePath(const std::string& path, StagedFile& target, const encode::EncodeSettings& settings,
                          const WorkWatch& watch = {}) {
  auto source = encode::EncodingSource::Open(path, settings);
  return source ? encode::EncodeFile(*source, target, settings, watch) : source.error();
}
inline Outcome ProvePath(const std::string& path, const std::string& made,
                         const encode::EncodeSettings& settings, const WorkWatch& watch = {}) {
  auto source = encode::EncodingSource::Open(path, settings);
  return source ? encode::ProveEncoding(*source, made, settings, watch) : source.error();
}
inline Outcome DecompressFile(const std::string& path, StagedFile& target, const WorkWatch& watch = {}) {
  auto media = encode::OpenCompressed(path);
  return media ? encode::Decompress(*std::move(media), path, target, {}, watch) : media.error();
}

inline std::vector<double> All(const std::string& path) {
  auto source = OpenPcm(path);
  EXPECT_THAT(source, IsOk()) << path;
  std::vector<double> all;
  if (!source) return all;
  std::vector<double> block(4096 * (*source)->Shape().channels);
  for (;;) {
    const auto got = (*source)->Read(block);
    EXPECT_THAT(got, IsOk());
    if (!got || *got == 0) return all;
    all.insert(all.end(), block.begin(),
               block.begin() + static_cast<std::ptrdiff_t>(*got * (*source)->Shape().channels));
  }
}

}  // namespace ts5::test
