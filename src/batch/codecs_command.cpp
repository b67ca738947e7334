// What the compressor can choose from: CodingObject and CodingFormat count as this list does.
#include "audio/encode/encoder.h"
#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "platform/base/text.h"

namespace ts5::batch {
namespace {

Json FormatsOf(const encode::CodecEntry& codec) {
  Json formats = Json::array();
  for (const encode::CodecFormat& format : codec.formats) {
    formats.push_back({{"index", formats.size()},
                       {"text", encode::CodecFormatText(format)},
                       {"rate", format.sampleRate},
                       {"channels", format.channels},
                       {"bitrate", format.bitRate}});
  }
  return formats;
}

}  // namespace

int CodecsCommand(CommandLine line, Console& console) {
  bool json = false;
  Arguments arguments("codecs", texts::BatchCodecsSummary, texts::BatchCodecsExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  if (const auto status = arguments.Read(line, console)) return *status;

  const auto codecs = encode::Codecs();
  if (json) {
    Json list = Json::array();
    for (const encode::CodecEntry& codec : codecs) {
      list.push_back({{"index", list.size()},
                      {"name", encode::EncoderById(codec.encoder).name},
                      {"tag", codec.tag},
                      {"formats", FormatsOf(codec)}});
    }
    console.out << JsonText({{"codecs", list}});
    return kExitSuccess;
  }
  for (std::size_t i = 0; i < codecs.size(); ++i) {
    console.out << Format("%2i  %s (0x%x)", i, encode::EncoderById(codecs[i].encoder).name, codecs[i].tag)
                << '\n';
    if (codecs[i].formats.empty()) console.out << "      " << Text(texts::BatchCodecConfigured) << '\n';
    for (std::size_t j = 0; j < codecs[i].formats.size(); ++j)
      console.out << Format("    %3i  %s", j, encode::CodecFormatText(codecs[i].formats[j])) << '\n';
  }
  return kExitSuccess;
}

}  // namespace ts5::batch
