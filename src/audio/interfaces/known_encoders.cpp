#include "audio/interfaces/known_encoders.h"

#include <cstdlib>
#include <span>

#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5::interfaces {
namespace {

struct KnownSet {
  std::string_view parameters;
  std::uint32_t bitRate;
  bool vbr = false;
};
struct KnownEncoder {
  std::string_view program;
  std::string_view name;
  std::string_view extension;
  std::span<const KnownSet> sets;
};

// Bit rates of lossless encoders are what they need at most for music, in the list's terms.
constexpr KnownSet kLame[] = {{"--quiet -b 128 {q} {z}", 128},
                              {"--quiet -b 192 {q} {z}", 192},
                              {"--quiet -b 320 {q} {z}", 320},
                              {"--quiet -V 2 {q} {z}", 192, true}};
constexpr KnownSet kTwolame[] = {{"--quiet -b 192 {q} {z}", 192}, {"--quiet -b 256 {q} {z}", 256}};
constexpr KnownSet kOggenc[] = {
    {"-Q -q 3 -o {z} {q}", 112, true}, {"-Q -q 5 -o {z} {q}", 160, true}, {"-Q -q 8 -o {z} {q}", 256, true}};
constexpr KnownSet kOpusenc[] = {{"--quiet --bitrate 96 {q} {z}", 96, true},
                                 {"--quiet --bitrate 128 {q} {z}", 128, true},
                                 {"--quiet --bitrate 192 {q} {z}", 192, true}};
constexpr KnownSet kFlac[] = {{"--silent -5 -o {z} {q}", 320, true}, {"--silent -8 -o {z} {q}", 320, true}};
constexpr KnownSet kFdkaac[] = {{"--silent -b 128 -o {z} {q}", 128}, {"--silent -m 4 -o {z} {q}", 128, true}};
constexpr KnownSet kWavpack[] = {{"-q {q} -o {z}", 320, true}, {"-q -hh {q} -o {z}", 320, true}};

constexpr KnownEncoder kKnown[] = {
    {"lame", "LAME (MP3)", "mp3", kLame},
    {"twolame", "TwoLAME (MP2)", "mp2", kTwolame},
    {"oggenc", "Ogg Vorbis (oggenc)", "ogg", kOggenc},
    {"opusenc", "Opus (opusenc)", "opus", kOpusenc},
    {"flac", "FLAC", "flac", kFlac},
    {"fdkaac", "AAC (fdkaac)", "m4a", kFdkaac},
    {"wavpack", "WavPack", "wv", kWavpack},
};

std::string FindAlong(std::string_view searchPath, std::string_view program) {
  for (const std::string_view directory : Split(searchPath, ':')) {
    if (!directory.starts_with('/')) continue;
    std::string path = JoinPath(std::string(directory), std::string(program));
    if (!EncoderFault(path)) return path;
  }
  return {};
}

}  // namespace

EncoderInterfaces FindEncoders(const std::string& searchPath) {
  EncoderInterfaces found;
  for (const KnownEncoder& known : kKnown) {
    EncoderInterface interface {
      FindAlong(searchPath, known.program), std::string(known.name), std::string(known.extension), {}
    };
    if (interface.encoder.empty()) continue;
    for (const KnownSet& set : known.sets)
      interface.sets.push_back(
          {.parameters = std::string(set.parameters), .bitRate = set.bitRate, .vbr = set.vbr});
    found.push_back(std::move(interface));
  }
  return found;
}

EncoderInterfaces FindEncoders() {
  const char* const path = std::getenv("PATH");
  return FindEncoders(path == nullptr ? "/usr/local/bin:/usr/bin:/bin" : path);
}

}  // namespace ts5::interfaces
