#include "search/search_parameters.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <utility>

#include "platform/strings.h"
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

// A number out of a short list. access: the member, of any type that converts to and from a number.
template <typename Access>
void OneOf(Table& table, const char* name, std::span<const std::int32_t> values, Access access) {
  std::string description;
  for (const std::int32_t value : values)
    description += (description.empty() ? "" : "|") + std::to_string(value);
  table.Single(
      name, description,
      [access](const SearchParameters& p) {
        return std::to_string(static_cast<std::int32_t>(access(const_cast<SearchParameters&>(p))));
      },
      [access, values](SearchParameters& p, std::string_view text) {
        const auto value = ParseInteger(Trim(text));
        if (!value || !std::ranges::any_of(values, [&](std::int32_t v) { return v == *value; })) return false;
        auto& member = access(p);
        member = static_cast<std::remove_reference_t<decltype(member)>>(*value);
        return true;
      });
}

ParameterField CountRow() {
  ParameterField field;
  field.name = "MelodyLen";
  field.description = "-";  // follows the melody
  field.load = [](FilterParameters&, const RegistryValues&) {};
  field.save = [](const FilterParameters& p, RegistryValues& values) {
    SearchMelody melody = static_cast<const SearchParameters&>(p).melody;
    TrimMelodyRests(melody);
    values.SetInteger("MelodyLen", static_cast<std::int64_t>(melody.elements.size()));
  };
  field.set = [](FilterParameters&, std::string_view) { return false; };
  return field;
}

ParameterField MelodyRow() {
  ParameterField field;
  field.name = "Melody";
  field.description = "60:240,r:120,...";
  field.load = [](FilterParameters& p, const RegistryValues& values) {
    const auto count = values.Integer("MelodyLen");
    const auto data = values.Binary("Melody");
    if (!count || !data || *count < 0 || std::cmp_greater(*count, data->size() / 4)) return;
    auto elements = MelodyFromStored(data->first(static_cast<std::size_t>(*count) * 4));
    if (!elements) return;
    SearchMelody& melody = static_cast<SearchParameters&>(p).melody;
    melody.elements = std::move(*elements);
    melody.cursor = 0;
  };
  field.save = [](const FilterParameters& p, RegistryValues& values) {
    SearchMelody melody = static_cast<const SearchParameters&>(p).melody;
    TrimMelodyRests(melody);
    values.SetBinary("Melody", StoredMelody(melody.elements));
  };
  field.set = [](FilterParameters& p, std::string_view text) {
    auto melody = MelodyFromNumbers(text);
    if (!melody) return false;
    ReplaceMelody(static_cast<SearchParameters&>(p).melody, std::move(melody->elements), {});
    return true;
  };
  return field;
}

}  // namespace

std::vector<ParameterField> SearchFields(FilterId filter) {
  using P = SearchParameters;
  Table table;
  OneOf(
      table, "Octave", kOctaves, [](P & p) -> auto& { return p.melody.octaveOffset; });
  OneOf(
      table, "Alteration", kAccidentals, [](P & p) -> auto& { return p.melody.accidental; });
  OneOf(
      table, "Key", kClefs, [](P & p) -> auto& { return p.melody.clef; });
  table.Single(
      "Point", "0|1", [](const P& p) { return std::string(p.melody.dotted ? "1" : "0"); },
      [](P& p, std::string_view text) {
        const auto value = ParseInteger(Trim(text));
        if (value) p.melody.dotted = *value == 1;
        return value.has_value();
      });
  OneOf(
      table, "NoteLen", kNoteValues, [](P & p) -> auto& { return p.melody.noteValue; });
  OneOf(
      table, "Rhythm", kRhythms, [](P & p) -> auto& { return p.options.rhythm; });
  if (filter == FilterId::MidiSearch) {
    OneOf(
        table, "Tick Tolerance", kFourLevels, [](P & p) -> auto& { return p.options.tolerance; });
  }
  OneOf(
      table, "Notes", kFourLevels, [](P & p) -> auto& { return p.options.pitch; });
  table.Integer("MIDIOut", &P::device, kMidiMapper, kNoMidiOutput);
  table.Integer("Tempo", &P::tempo, kLeastTempo, kMostTempo);
  table.Integer("Instrument", &P::instrument, 0, 127);
  const auto flag = [&](const char* name, bool SearchOptions::*member) {
    table.Single(
        name, "0|1", [member](const P& p) { return std::string(p.options.*member ? "1" : "0"); },
        [member](P& p, std::string_view text) {
          const auto value = ParseInteger(Trim(text));
          if (value) p.options.*member = *value == 1;
          return value.has_value();
        });
  };
  flag("FirstTrack", &SearchOptions::firstTrackOnly);
  flag("DrumTrack", &SearchOptions::drumTrack);
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

std::string_view InstrumentName(std::int32_t program) {
  const int number = static_cast<int>(texts::Instrument001) + std::clamp(program, 0, 127);
  return TextByNumber(number).value_or(std::string_view{});
}

}  // namespace ts5
