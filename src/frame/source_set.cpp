#include "frame/source_set.h"

#include <optional>
#include <utility>

#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

// The last name of a path, as media compare it that know no case.
std::string NameKey(std::string_view path) {
  const std::string_view name = FileNameOf(path);
  return ToLower(name.substr(0, name.find_last_not_of(". ") + 1));
}

}  // namespace

std::string PathKeys::OfDirectory(const std::string& directory) {
  if (const auto known = directories_.find(directory); known != directories_.end()) return known->second;
  const std::string name = directory.empty() ? "." : directory;
  const std::string_view above = DirectoryOf(name);
  const bool step = FileNameOf(name) == "." || FileNameOf(name) == "..";
  const std::string plain = step ? NormalisedPath(name) : name;
  std::string key = name;
  if (const std::optional<FileIdentity> identity = files_->identity(name)) {
    key = Format("%u:%u", identity->device, identity->file);
  } else if (plain != name) {
    key = OfDirectory(plain);
  } else if (!step && above != name) {
    key = OfDirectory(std::string(above)) + "/" + NameKey(name);
  }
  directories_.emplace(directory, key);
  return key;
}

std::string PathKeys::Of(const std::string& path) {
  return OfDirectory(std::string(DirectoryOf(path))) + "/" + NameKey(path);
}

void SourceSet::Collect() {
  if (std::exchange(collected_, true)) return;
  const std::size_t count = ItemCount(*job_);
  names_.reserve(count);
  for (std::size_t i = 0; i < count; ++i) ++names_[keys_.Of(ItemSource(*job_, i))];
}

void SourceSet::CollectIdentities() {
  if (std::exchange(identified_, true)) return;
  const std::size_t count = ItemCount(*job_);
  for (std::size_t i = 0; i < count; ++i) {
    if (const auto identity = files_->identity(ItemSource(*job_, i))) ++identities_[*identity];
  }
}

bool SourceSet::Contains(const std::string& path) {
  Collect();
  if (names_.contains(keys_.Of(path))) return true;
  const auto identity = files_->identity(path);
  if (!identity) return false;  // only what is there can be there under another name
  CollectIdentities();
  return identities_.contains(*identity);
}

bool SourceSet::IsOnly(const std::string& path, const std::string& source) {
  const auto identity = files_->identity(path);
  if (!identity || identity != files_->identity(source)) return false;
  CollectIdentities();
  const auto found = identities_.find(*identity);
  return found != identities_.end() && found->second == 1;
}

}  // namespace ts5
