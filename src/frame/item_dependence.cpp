#include "frame/item_dependence.h"

#include <cctype>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <unordered_set>

#include "platform/paths.h"
#include "platform/text.h"

namespace ts5 {
namespace {

constexpr std::size_t kFewestDigits = 3;  // of a numbered name

// Texts that are equal when two paths lead to the same directory entry. Case is ignored, as some media do.
class PathKeys {
 public:
  std::string Of(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_symlink(path, error)) {
      const auto leadsTo = std::filesystem::weakly_canonical(path, error);
      if (!error) return ToLower(leadsTo.string());
    }
    return ToLower(JoinPath(Directory(std::string(DirectoryOf(path))), FileNameOf(path)));
  }

 private:
  const std::string& Directory(const std::string& path) {
    const auto [known, added] = directories_.try_emplace(path);
    if (added) {
      std::error_code error;
      const auto canonical = std::filesystem::weakly_canonical(path.empty() ? "." : path, error);
      known->second = error ? path : canonical.string();
    }
    return known->second;
  }

  std::unordered_map<std::string, std::string> directories_;
};

// The names without a number that numbering could have made into this one: song0012.mid may come from
// song0.mid and from song.mid.
std::vector<std::string> Unnumbered(const std::string& path) {
  std::vector<std::string> names;
  const std::string_view head = WithoutExtension(path);
  const std::string tail = path.substr(head.size());
  std::size_t digits = 0;
  while (digits < head.size() &&
         std::isdigit(static_cast<unsigned char>(head[head.size() - 1 - digits])) != 0) {
    if (++digits >= kFewestDigits) names.push_back(std::string(head.substr(0, head.size() - digits)) + tail);
  }
  return names;
}

}  // namespace

bool SourceCouldBeTarget(const std::vector<PlannedItem>& items) {
  PathKeys keys;
  std::unordered_map<std::string, std::size_t> sources;  // with the item; a source that stands twice has none
  constexpr std::size_t kSeveral = static_cast<std::size_t>(-1);
  for (std::size_t i = 0; i < items.size(); ++i) {
    const auto [entry, added] = sources.try_emplace(keys.Of(items[i].source), i);
    if (!added) entry->second = kSeveral;
  }
  std::unordered_set<std::string> targets;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const std::string plain = items[i].target.Plain();
    if (plain.empty()) continue;
    std::string key = keys.Of(plain);
    const auto source = sources.find(key);
    if (source != sources.end() && source->second != i) return true;
    targets.insert(std::move(key));
  }
  // A numbered name is one that does not exist yet: only a source that is missing can have it.
  std::error_code error;
  for (const PlannedItem& item : items) {
    const std::vector<std::string> names = Unnumbered(keys.Of(item.source));
    if (names.empty() || std::filesystem::exists(item.source, error)) continue;
    for (const std::string& name : names) {
      if (targets.contains(name)) return true;
    }
  }
  return false;
}

}  // namespace ts5
