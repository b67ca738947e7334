// The named melodies in the registry: one binary value per melody, its name the value's name.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/base/strings.h"
#include "platform/store/registry.h"
#include "search/search_melody.h"

namespace ts5 {

inline constexpr std::string_view kMelodyKey =
    R"(HKEY_LOCAL_MACHINE\software\qlw\Stavora-dialog\5.0\Suchmelodien)";

struct StoredMelodyInfo {
  std::string name;
  std::size_t noteCount = 0;  // elements, rests included

  bool operator==(const StoredMelodyInfo&) const = default;
};

enum class MelodyColumn { Name, NoteCount };

class MelodyStore {
 public:
  explicit MelodyStore(Registry& registry) : registry_(registry) {}

  // By name, without regard to case. Values that are no melodies are left out.
  [[nodiscard]] Result<std::vector<StoredMelodyInfo>> ListStoredMelodies() const;
  [[nodiscard]] Result<bool> Exists(std::string_view name) const;
  // Trims rests at both ends and writes, over a melody of that name if there is one. WrongFormat: the name
  // has not 1..80 characters, or no note is left.
  [[nodiscard]] Outcome SaveMelody(std::string_view name, SearchMelody melody);
  // SourceFailed: there is none of that name; WrongFormat: it has no elements.
  [[nodiscard]] Result<std::vector<MelodyElement>> LoadMelody(std::string_view name) const;
  // In one step; another melody of the new name is replaced. SourceFailed, WrongFormat for the new name.
  [[nodiscard]] Outcome RenameMelody(std::string_view from, std::string_view to);
  [[nodiscard]] Outcome DeleteMelody(std::string_view name);  // SourceFailed: there is none

 private:
  Registry& registry_;
};

// The list of the management dialog in order of a column; names without regard to case.
void SortMelodies(std::vector<StoredMelodyInfo>& melodies, MelodyColumn column, bool ascending);

// What a dialog says and asks; answers true for Yes.
using MelodyQuestion = std::function<bool(TextId)>;

// The rules of the dialogs: what they ask before they act, and the message when they fail or refuse. Done is
// false when the user said No or a message is to be shown; then the dialog stays.
struct MelodyAction {
  bool done = false;
  std::optional<TextId> message;
};
[[nodiscard]] MelodyAction SaveMelodyAs(MelodyStore& store, std::string_view name, const SearchMelody& melody,
                                        const MelodyQuestion& ask);
[[nodiscard]] MelodyAction RenameStoredMelody(MelodyStore& store, std::string_view from, std::string_view to,
                                              const MelodyQuestion& ask);
[[nodiscard]] MelodyAction DeleteStoredMelody(MelodyStore& store, std::string_view name,
                                              const MelodyQuestion& ask);
// Into the editor's melody.
[[nodiscard]] MelodyAction LoadStoredMelody(MelodyStore& store, std::string_view name, SearchMelody& melody,
                                            const MelodyQuestion& ask);

}  // namespace ts5
