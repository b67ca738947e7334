#include "search/melody_store.h"

#include <algorithm>
#include <utility>

#include "platform/base/text.h"
#include "search/texts.h"

namespace ts5 {
namespace {

bool IsMelodyName(std::string_view name) {
  return !name.empty() && IsUtf8(name) && CharacterCount(name) <= kMaxMelodyNameCharacters;
}

bool IsMelody(const RegistryValue& value) {
  return value.kind == RegistryValue::Kind::Binary;
}

// The value under the name; SourceFailed when it is no melody.
Result<RegistryValue> Find(const Registry& registry, std::string_view name) {
  const auto values = registry.Read(kMelodyKey);
  if (!values) return Failure(values.error());
  const RegistryValue* value = values->Find(name);
  if (value == nullptr || !IsMelody(*value)) return Failure(Outcome::SourceFailed);
  return *value;
}

MelodyAction ActionOf(Outcome outcome, TextId failure) {
  if (Succeeded(outcome)) return {true, {}};
  return {false, failure};
}

}  // namespace

Result<std::vector<StoredMelodyInfo>> MelodyStore::ListStoredMelodies() const {
  const auto values = registry_.Read(kMelodyKey);
  if (!values) return Failure(values.error());
  std::vector<StoredMelodyInfo> melodies;
  for (const auto& [name, value] : values->All()) {
    if (IsMelody(value)) melodies.push_back({name, value.data.size() / 4});
  }
  return melodies;
}

Result<bool> MelodyStore::Exists(std::string_view name) const {
  const auto value = Find(registry_, name);
  if (value) return true;
  if (value.error() == Outcome::SourceFailed) return false;
  return Failure(value.error());
}

Outcome MelodyStore::SaveMelody(std::string_view name, SearchMelody melody) {
  TrimMelodyRests(melody);
  if (!IsMelodyName(name) || melody.elements.empty()) return Outcome::WrongFormat;
  const Bytes data = StoredMelody(melody.elements);
  return registry_.SetValue(kMelodyKey, name, {RegistryValue::Kind::Binary, std::string(AsText(data))});
}

Result<std::vector<MelodyElement>> MelodyStore::LoadMelody(std::string_view name) const {
  const auto value = Find(registry_, name);
  if (!value) return Failure(value.error());
  auto elements = MelodyFromStored(AsBytes(value->data));
  if (!elements || elements->empty()) return Failure(Outcome::WrongFormat);
  return std::move(*elements);
}

Outcome MelodyStore::RenameMelody(std::string_view from, std::string_view to) {
  if (!IsMelodyName(to)) return Outcome::WrongFormat;
  if (from == to) return Outcome::Success;
  return registry_.Transaction([&] {
    auto value = Find(registry_, from);
    if (!value) return value.error();
    // The old value goes first: a name that changes only in its case is the same value.
    for (const std::string_view name : {from, to}) {
      if (const Outcome deleted = registry_.DeleteValue(kMelodyKey, name); Failed(deleted)) return deleted;
    }
    return registry_.SetValue(kMelodyKey, to, std::move(*value));
  });
}

Outcome MelodyStore::DeleteMelody(std::string_view name) {
  if (const auto value = Find(registry_, name); !value) return value.error();
  return registry_.DeleteValue(kMelodyKey, name);
}

void SortMelodies(std::vector<StoredMelodyInfo>& melodies, MelodyColumn column, bool ascending) {
  std::ranges::stable_sort(melodies, [&](const StoredMelodyInfo& a, const StoredMelodyInfo& b) {
    const StoredMelodyInfo& first = ascending ? a : b;
    const StoredMelodyInfo& second = ascending ? b : a;
    if (column == MelodyColumn::NoteCount) return first.noteCount < second.noteCount;
    return CompareIgnoringCase(first.name, second.name) < 0;
  });
}

MelodyAction SaveMelodyAs(MelodyStore& store, std::string_view name, const SearchMelody& melody,
                          const MelodyQuestion& ask) {
  if (name.empty()) return {false, texts::MelodyNameMissing};
  if (store.Exists(name).value_or(false) && !ask(texts::MelodyExists)) return {};
  return ActionOf(store.SaveMelody(name, melody), texts::MelodyNotSaved);
}

MelodyAction RenameStoredMelody(MelodyStore& store, std::string_view from, std::string_view to,
                                const MelodyQuestion& ask) {
  const bool another = !EqualsIgnoringCase(from, to) && store.Exists(to).value_or(false);
  if (another && !ask(texts::MelodyTitleExists)) return {};
  return ActionOf(store.RenameMelody(from, to), texts::MelodyNotRenamed);
}

MelodyAction DeleteStoredMelody(MelodyStore& store, std::string_view name, const MelodyQuestion& ask) {
  if (!ask(texts::AskDeleteMelody)) return {};
  return ActionOf(store.DeleteMelody(name), texts::MelodyNotDeleted);
}

MelodyAction LoadStoredMelody(MelodyStore& store, std::string_view name, SearchMelody& melody,
                              const MelodyQuestion& ask) {
  if (!ask(texts::AskReplaceMelody)) return {};
  auto elements = store.LoadMelody(name);
  if (!elements) return {false, texts::MelodyNotLoaded};
  ReplaceMelody(melody, std::move(*elements), std::string(name));
  return {true, {}};
}

}  // namespace ts5
