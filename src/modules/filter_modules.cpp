#include "modules/filter_modules.h"

#include <algorithm>
#include <vector>

#include "artworker/print_run.h"
#include "audio/audio_player.h"
#include "audio/encode/compressor.h"
#include "audio/encode/decompressor.h"
#include "audio/midi_to_wave.h"
#include "audio/wave_converter.h"
#include "converters/heard_score.h"
#include "converters/transcribe/midi_to_score.h"
#include "converters/xml_converter.h"
#include "disc/burner.h"
#include "disc/copier.h"
#include "disc/grabber.h"
#include "midi/midi_converter.h"
#include "midi/midi_player.h"
#include "score/score_filter.h"
#include "score/score_image.h"
#include "score/score_player.h"
#include "search/search_run.h"

namespace ts5 {
namespace {

// One line per filter.
const std::vector<FilterModule>& Table() {
  static const std::vector<FilterModule> table = [] {
    SetScoreImageReader(converters::HeardScore);
    std::vector<FilterModule> modules;
    modules.push_back(ScoreToMidiModule());
    modules.push_back(transcribe::MidiToScoreModule());
    modules.push_back(MidiConverterModule());
    modules.push_back(MidiPlayerModule());
    modules.push_back(MidiToWaveModule());
    modules.push_back(AudioPlayerModule());
    modules.push_back(encode::AudioCompressorModule());
    modules.push_back(encode::AudioDecompressorModule());
    modules.push_back(ScoreSearchModule());
    modules.push_back(MidiSearchModule());
    modules.push_back(WaveConverterModule());
    modules.push_back(ScorePlayerModule());
    modules.push_back(converters::XmlConverterModule());
    modules.push_back(disc::BurnerModule());
    modules.push_back(artworker::ArtworkerModule());
    modules.push_back(disc::GrabberModule());
    modules.push_back(disc::CopierModule());
    std::ranges::sort(modules, {}, &FilterModule::id);
    return modules;
  }();
  return table;
}

}  // namespace

std::span<const FilterModule> Modules() {
  return Table();
}

const FilterModule* FindModule(FilterId id) {
  const auto found = std::ranges::find(Table(), id, &FilterModule::id);
  return found == Table().end() ? nullptr : &*found;
}

bool CanRun(FilterId id) {
  const FilterModule* module = FindModule(id);
  return module != nullptr && module->run;
}

}  // namespace ts5
