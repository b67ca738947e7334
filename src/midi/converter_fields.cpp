#include "midi/converter_fields.h"

namespace ts5 {

namespace {

// The description is as long as the user wants; it is stored beside its length, and ends there whatever the
// text holds.
void AddDescription(FieldTable<ConverterParameters>& table) {
  table.Single(
      "Subject", "Text", [](const ConverterParameters& p) { return p.description; },
      [](ConverterParameters& p, std::string_view text) {
        p.description = std::string(text);
        return true;
      });
  // Behind the text that it cuts.
  table.Single(
      "SubjectLen", "0..2147483647",
      [](const ConverterParameters& p) { return std::to_string(CharacterCount(p.description)); },
      [](ConverterParameters& p, std::string_view text) {
        const auto length = ParseInteger(Trim(text));
        if (!length || *length < 0) return false;
        p.description = FirstCharacters(p.description, static_cast<std::size_t>(*length));
        return true;
      });
}

}  // namespace

std::vector<ParameterField> ConverterFields() {
  using P = ConverterParameters;
  FieldTable<P> table;
  table.Flag("FormatSmall", &P::changeContainer)
      .Flag("Option1", &P::toRiff)
      .Flag("FormatBig", &P::changeFormat)
      .Flag("ChangeTimebase", &P::changeTimeBase)
      .Integer("NewTimebase", &P::timeBaseIndex, 0, static_cast<std::int32_t>(kTimeBases.size()) - 1)
      .Text("Copyright", &P::copyright, P::kMaxAttribute)
      .Text("Artist", &P::artist, P::kMaxAttribute)
      .Text("Displayname", &P::title, P::kMaxAttribute);
  AddDescription(table);
  return table.Build();
}

}  // namespace ts5
