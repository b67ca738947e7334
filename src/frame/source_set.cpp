#include "frame/source_set.h"

#include <optional>
#include <utility>

#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {

std::string PathKeys::Of(const std::string& path) {
  std::string directory(DirectoryOf(path));
  const auto [known, added] = directories_.try_emplace(std::move(directory));
  if (added) {
    const std::optional<FileIdentity> identity = files_->identity(known->first.empty() ? "." : known->first);
    known->second =
        identity ? Format("%u:%u", identity->device, identity->file) : ToLower(NormalisedPath(known->first));
  }
  return known->second + "/" + ToLower(FileNameOf(path));
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
