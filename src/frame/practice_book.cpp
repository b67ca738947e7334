#include "frame/practice_book.h"

#include <algorithm>

#include "frame/guarded_profile.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/store/profile.h"

namespace ts5 {
namespace {

constexpr std::string_view kFile = "practice.ini";
constexpr std::string_view kSection = "sts5 Practice";

// A path may hold what ends a key, so both stand in the value.
constexpr char kBetween = '|';

}  // namespace

PracticeBook::PracticeBook(std::string path)
    : path_(path.empty() ? JoinPath(ProgramDirectory(), kFile) : std::move(path)) {}

void PracticeBook::Read() {
  if (read_) return;
  read_ = true;
  const auto file =
      FileExists(path_) ? Profile::Load(path_) : Result<Profile>(Failure(Outcome::SourceFailed));
  if (!file || !HasGuard(*file, kSection)) return;
  for (std::size_t i = 1; i <= kMostPractised; ++i) {
    const std::string line = file->ReadText(kSection, std::to_string(i));
    const std::size_t at = line.find(kBetween);
    if (at == std::string::npos) break;
    entries_.emplace_back(line.substr(at + 1), line.substr(0, at));
  }
}

Practice PracticeBook::Of(const std::string& file) {
  const std::lock_guard lock(mutex_);
  Read();
  const auto found = std::ranges::find(entries_, file, &std::pair<std::string, std::string>::first);
  return found == entries_.end() ? Practice{} : ParsePractice(found->second);
}

void PracticeBook::Keep(const std::string& file, const Practice& practice) {
  const std::string text = PracticeText(practice);
  const std::lock_guard lock(mutex_);
  Read();
  const auto found = std::ranges::find(entries_, file, &std::pair<std::string, std::string>::first);
  if (found == entries_.end() ? text.empty() : found->second == text) return;
  if (found != entries_.end()) entries_.erase(found);
  if (!text.empty()) entries_.emplace_front(file, text);
  if (entries_.size() > kMostPractised) entries_.pop_back();
  changed_ = true;
}

Outcome PracticeBook::Save() {
  const std::lock_guard lock(mutex_);
  if (!changed_) return Outcome::Success;
  Profile file(TextEncoding::Utf8);
  WriteGuard(file, kSection);
  std::size_t number = 0;
  for (const auto& [path, text] : entries_)
    file.Write(kSection, std::to_string(++number), text + kBetween + path);
  if (const Outcome made = MakeDirectories(std::string(DirectoryOf(path_))); Failed(made)) return made;
  const Outcome saved = file.Save(path_);
  changed_ = Failed(saved);
  return saved;
}

}  // namespace ts5
