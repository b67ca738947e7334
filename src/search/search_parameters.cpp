#include "search/search_parameters.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "platform/base/strings.h"
#include "search/melody_text.h"
#include "search/texts.h"

namespace ts5 {
namespace {

using Table = FieldTable<SearchParameters>;

constexpr std::array<std::int32_t, 3> kOctaves = {-12, 0, 12};
constexpr std::array<std::int32_t, 3> kAccidentals = {-1, 0, 1};
constexpr std::array<std::int32_t, 2> kClefs = {0, 2};
constexpr std::array<std::int32_t, 6> kNoteValues = {960, 480, 240, 120, 60, 30};
constexpr std::array<std::int32_t, 3> kRhythms = {0, 1, 2};
constexpr std::array<std::int32_t, 4> kFourLevels = {0, 1, 2, 3};

ParameterField CountRow() {
  FieldOf<SearchParameters> field;
  field.name = "MelodyLen";
  field.description = "-";  // follows the melody
  field.load = [](SearchParameters&, const RegistryValues&) {};
  field.save = [](const SearchParameters& p, RegistryValues& values) {
    SearchMelody melody = p.melody;
    TrimMelodyRests(melody);
    values.SetInteger("MelodyLen", static_cast<std::int64_t>(melody.elements.size()));
  };
  field.set = [](SearchParameters&, std::string_view) { return false; };
  return MakeField(std::move(field));
}

ParameterField MelodyRow() {
  FieldOf<SearchParameters> field;
  field.name = "Melody";
  field.description = "60:240,r:120,...";
  field.load = [](SearchParameters& p, const RegistryValues& values) {
    const auto count = values.Integer("MelodyLen");
    const auto data = values.Binary("Melody");
    if (!count || !data || *count < 0 || std::cmp_greater(*count, data->size() / 4)) return;
    auto elements = MelodyFromStored(data->first(static_cast<std::size_t>(*count) * 4));
    if (!elements) return;
    SearchMelody& melody = p.melody;
    melody.elements = std::move(*elements);
    melody.cursor = 0;
  };
  field.save = [](const SearchParameters& p, RegistryValues& values) {
    SearchMelody melody = p.melody;
    TrimMelodyRests(melody);
    values.SetBinary("Melody", StoredMelody(melody.elements));
  };
  field.set = [](SearchParameters& p, std::string_view text) {
    auto melody = MelodyFromNumbers(text);
    if (!melody) return false;
    ReplaceMelody(p.melody, std::move(melody->elements), {});
    return true;
  };
  return MakeField(std::move(field));
}

}  // namespace

std::vector<ParameterField> SearchFields(SearchKind kind) {
  using P = SearchParameters;
  const auto option = [](auto SearchOptions::*member) {
    return [member](auto& p) -> auto& {
      return p.options.*member;
    };
  };
  const auto note = [](auto SearchMelody::*member) {
    return [member](auto& p) -> auto& {
      return p.melody.*member;
    };
  };
  Table table;
  table.Choice("Octave", kOctaves, note(&SearchMelody::octaveOffset))
      .Choice("Alteration", kAccidentals, note(&SearchMelody::accidental))
      .Choice("Key", kClefs, note(&SearchMelody::clef))
      .Flag("Point", note(&SearchMelody::dotted))
      .Choice("NoteLen", kNoteValues, note(&SearchMelody::noteValue))
      .Choice("Rhythm", kRhythms, option(&SearchOptions::rhythm));
  if (kind == SearchKind::Midi)
    table.Choice("Tick Tolerance", kFourLevels, option(&SearchOptions::tolerance));
  table.Choice("Notes", kFourLevels, option(&SearchOptions::pitch))
      .Integer("MIDIOut", &P::device, kMidiMapper, kNoMidiOutput)
      .Integer("Tempo", &P::tempo, kLeastTempo, kMostTempo)
      .Integer("Instrument", &P::instrument, 0, 127)
      .Flag("FirstTrack", option(&SearchOptions::firstTrackOnly))
      .Flag("DrumTrack", option(&SearchOptions::drumTrack));
  table.Single(
      "MelodyName", "Text (max. 80)", [](const P& p) { return p.melody.name; },
      [](P& p, std::string_view text) {
        if (CharacterCount(text) > kMaxMelodyNameCharacters) return false;
        p.melody.name = std::string(text);
        return true;
      });
  return table.Row(CountRow()).Row(MelodyRow()).Build();
}

bool HasMelody(const SearchParameters& parameters) {
  return !std::ranges::all_of(parameters.melody.elements, IsRest);
}

}  // namespace ts5
