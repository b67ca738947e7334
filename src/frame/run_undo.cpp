#include "frame/run_undo.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "frame/target_naming.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/disk_calls.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/files/remove_tree.h"
#include "platform/files/wastebasket.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = std::size_t{1} << 20;

constexpr std::string_view kNotes = "notes";
constexpr std::size_t kMostNewDirectories = 31;  // as many as are noted of one file
constexpr std::uint64_t kMostNotes = std::uint64_t{256} << 20;

// Behind all links, those of the folders on the way included.
std::string RealPath(const std::string& path) {
  std::error_code error;
  const fs::path real = fs::weakly_canonical(path, error);
  return error ? path : real.native();
}

bool Lock(const FileDescriptor& file) {
  return Retry([&] { return ::flock(file.Get(), LOCK_EX | LOCK_NB); }) == 0;
}

FileDescriptor OpenDirectory(const std::string& path) {
  return FileDescriptor(Retry([&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

// Writes the file into what write takes; SourceFailed, Cancelled, or what write says.
template <typename Write>
Outcome CopyPieces(const std::string& from, const CancelCheck& cancelled, const Write& write) {
  const FileDescriptor source(Retry([&] { return ::open(from.c_str(), O_RDONLY | O_CLOEXEC); }));
  if (!source) return Outcome::SourceFailed;
  Bytes piece(kPiece);
  for (;;) {
    if (cancelled && cancelled()) return Outcome::Cancelled;
    const ssize_t got = Retry([&] { return ::read(source.Get(), piece.data(), piece.size()); });
    if (got < 0) return Outcome::SourceFailed;
    if (got == 0) return Outcome::Success;
    if (const Outcome written = write(ByteView(piece).first(static_cast<std::size_t>(got))); Failed(written))
      return written;
  }
}

// Rights and time of a file for its copy.
void TakeOverAttributes(const std::string& from, const std::string& to) {
  struct stat status {};
  if (::stat(from.c_str(), &status) != 0) return;
  (void)::chmod(to.c_str(), status.st_mode & 07777);
  const timespec times[2] = {status.st_atim, status.st_mtim};
  (void)::utimensat(AT_FDCWD, to.c_str(), times, 0);
}

Outcome CopyTo(const std::string& from, const std::string& to, const CancelCheck& cancelled) {
  const FileDescriptor target(Disk().Create(to, 0600));
  if (!target) return Outcome::TargetFailed;
  std::uint64_t size = 0;
  const Outcome copied = CopyPieces(from, cancelled, [&](ByteView bytes) {
    const Outcome written = WriteAll(target.Get(), size, bytes);
    size += bytes.size();
    return written;
  });
  Failed(copied) ? (void)Disk().Unlink(to) : TakeOverAttributes(from, to);
  return copied;
}

std::vector<std::string> FoldersIn(const std::string& directory) {
  std::error_code error;
  std::vector<std::string> folders;
  for (auto entry = fs::directory_iterator(directory, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    folders.push_back(entry->path().native());
  }
  return folders;
}

std::optional<UndoNotes> NotesIn(const std::string& folder) {
  const auto content = ReadFile(JoinPath(folder, kNotes), kMostNotes);
  return content ? ReadNotes(*content, folder) : std::nullopt;
}

}  // namespace

// --- while the run goes on

RunUndo::~RunUndo() {
  if (folder_.empty() || cut_ || (owner_ && Any()) || !RescueKept()) return;
  (void)RemoveFile(JoinPath(folder_, kNotes));  // first: what has none is only cleared
  RemoveTreeInBackground(folder_);
}

// What could not be brought back is the user's all the same. False when something has to stay where it is.
bool RunUndo::RescueKept() const {
  bool all = true;
  for (const UndoItem& item : items_) {
    if (!(item.removed || uncertain_) || item.kept.empty() || !FileExists(item.kept)) continue;
    const std::string named = JoinPath(folder_, FileNameOf(item.path));
    const bool second = Disk().Link(item.kept, named) == 0;
    if (Failed(MoveToTrash(second ? named : item.kept))) {
      all = false;
      if (second) (void)Disk().Unlink(named);
    } else if (second) {
      (void)Disk().Unlink(item.kept);
    }
  }
  return all;
}

bool RunUndo::OpenFolder() {
  constexpr int kMaxAttempts = 1000;
  if (!folder_.empty()) return true;
  if (directory_.empty() || Failed(MakeDirectories(directory_))) return false;
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    const std::string folder = JoinPath(directory_, Format("%d-%d", static_cast<int>(::getpid()), attempt));
    if (::mkdir(folder.c_str(), 0700) != 0) {
      if (errno == EEXIST) continue;
      return false;
    }
    lock_ = OpenDirectory(folder);
    // Another program may take it for abandoned before it is locked.
    if (!lock_ || !Lock(lock_) || !IsDirectory(folder)) continue;
    folder_ = folder;
    return true;
  }
  return false;
}

void RunUndo::DropPending() {
  if (pending_ && !pending_->kept.empty()) {
    (void)Disk().Unlink(pending_->kept);
    kept_ -= pendingSize_;
  }
  pending_.reset();
}

Outcome RunUndo::KeepAs(const std::string& path, const std::string& kept, std::uint64_t size,
                        const CancelCheck& cancelled) {
  if (size > most_ || kept_ > most_ - size || !OpenFolder()) return Outcome::WriteFailed;
  const std::string place = JoinPath(folder_, kept);
  pending_->kept = place;
  if (Disk().Link(path, place) == 0) return Outcome::Success;
  pending_->copied = true;
  return CopyTo(path, place, cancelled);
}

Outcome RunUndo::Keep(const std::string& target, const CancelCheck& cancelled) {
  DropPending();
  const std::string path = RealPath(target);
  const auto mark = MarkOf(path);
  if (!mark) return Outcome::Success;
  // What the run has made itself is no file of the user's.
  if (const auto made = places_.find(path); made != places_.end() && items_[made->second].made == *mark)
    return Outcome::Success;
  pending_ = UndoItem{.path = path, .made = {}};
  pendingSize_ = mark->size;
  const Outcome kept = KeepAs(path, std::to_string(++number_), mark->size, cancelled);
  if (Succeeded(kept)) {
    kept_ += mark->size;
    return kept;
  }
  pending_->kept.clear();
  pending_->notKept = true;
  if (kept != Outcome::Cancelled) return Outcome::Success;
  pending_.reset();
  return kept;
}

void RunUndo::Made(const std::string& target, std::size_t newDirectories) {
  const std::string path = RealPath(target);
  const auto mark = MarkOf(path);
  if (!mark) return DropPending();
  const auto [place, isNew] = places_.try_emplace(path, items_.size());
  if (!isNew) {
    items_[place->second].made = *mark;
    return DropPending();
  }
  UndoItem item{.path = path, .made = *mark};
  if (pending_ && pending_->path == path) {
    item = *std::exchange(pending_, std::nullopt);
    item.made = *mark;
  }
  DropPending();
  item.newDirectories = static_cast<std::uint8_t>(std::min(newDirectories, kMostNewDirectories));
  items_.push_back(std::move(item));
}

void RunUndo::Changed(const std::string& target) {
  const std::string path = RealPath(target);
  const auto place = places_.find(path);
  const auto mark = MarkOf(path);
  if (place != places_.end() && mark) items_[place->second].made = *mark;
}

// --- back

bool RunUndo::Any() const {
  return std::ranges::any_of(items_, [](const UndoItem& item) { return !item.done; });
}

std::size_t RunUndo::NotKept() const {
  return static_cast<std::size_t>(std::ranges::count(items_, true, &UndoItem::notKept));
}

bool RunUndo::NoteDown(const std::optional<UndoOwner>& owner) const {
  return Succeeded(WriteFile(JoinPath(folder_, kNotes), NotesOf(items_, owner)));
}

bool RunUndo::KeepFor(const UndoOwner& owner) {
  DropPending();
  if (owner_ == owner || !Any()) return true;
  if (cut_ || uncertain_ || !OpenFolder() || !NoteDown(owner)) return false;
  owner_ = owner;
  return true;
}

UndoReport RunUndo::Undo(const CancelCheck& cancelled) {
  DropPending();
  UndoReport report;
  if (!Any()) return report;
  // So that nothing is lost when it is cut: what is kept is known from now on.
  const bool noted = folder_.empty() || uncertain_ || NoteDown({});
  cut_ = noted;
  for (auto item = items_.rbegin(); item != items_.rend(); ++item) {
    if (cancelled && cancelled()) return report;
    if (item->done) continue;
    if (noted || item->kept.empty()) {
      TakeBack(*item, report);
    } else {
      report.failed.push_back(item->path);
    }
  }
  cut_ = false;
  RemoveEmptied();
  if (owner_ && Any() && !NoteDown(owner_)) owner_.reset();
  return report;
}

void RunUndo::TakeBack(UndoItem& item, UndoReport& report) {
  if (uncertain_ && !item.kept.empty() && !FileExists(item.kept)) {  // it was brought back before
    item.done = true;
    return;
  }
  const auto now = item.removed ? std::nullopt : MarkOf(item.path);
  if (now && *now != item.made) {
    report.changed.push_back(item.path);
    return;
  }
  if (item.notKept) {
    report.notKept.push_back(item.path);
    return;
  }
  // A copy is brought beside its place first: once that is there, nothing can go wrong on the way back.
  std::optional<StagedFile> back;
  if (now && item.copied) {
    auto staged = StagedFile::Create(item.path);
    const Outcome copied =
        staged ? CopyPieces(item.kept, {}, [&](ByteView bytes) { return staged->Write(bytes); })
               : staged.error();
    if (Failed(copied) || Failed(staged->Flush())) {
      report.failed.push_back(item.path);
      return;
    }
    back = *std::move(staged);
  }
  if (now) {
    if (Failed(MoveToTrash(item.path))) {
      report.failed.push_back(item.path);
      return;
    }
    ++report.removed;
  }
  item.removed = true;
  if (back) {
    if (const auto put = back->CommitNew(item.path); put && *put) {
      TakeOverAttributes(item.kept, item.path);
      (void)Disk().Unlink(item.kept);
      item.kept.clear();
      ++report.restored;
    }
  }
  if (!item.kept.empty()) BringBack(item, report);
  item.done = item.kept.empty();
}

// Directories that came into being for files which are gone, as far as nothing else is in them.
void RunUndo::RemoveEmptied() const {
  std::set<std::string, std::greater<>> directories;  // those within others first
  for (const UndoItem& item : items_) {
    std::string directory = item.path;
    for (std::size_t i = 0; item.done && i < item.newDirectories; ++i) {
      directory = std::string(DirectoryOf(directory));
      directories.insert(directory);
    }
  }
  for (const std::string& directory : directories) (void)::rmdir(directory.c_str());
}

// To its place; where something else stands there by now, to the next free number beside it, else into the
// wastebasket: it is the user's.
void RunUndo::BringBack(UndoItem& item, UndoReport& report) {
  constexpr std::uint32_t kMaxNumber = 999;
  if (Succeeded(RenameFile(item.kept, item.path))) {
    item.kept.clear();
    ++report.restored;
    return;
  }
  const TargetName family = TargetName::Of(item.path);
  for (std::uint32_t number = 1; FileExists(item.path) && number <= kMaxNumber; ++number) {
    const std::string name = family.Numbered(number);
    if (FileExists(name) || Failed(RenameFile(item.kept, name))) continue;
    item.kept.clear();
    report.elsewhere.push_back(name);
    return;
  }
  report.failed.push_back(item.path);
}

// --- all runs

std::string UndoDirectory() {
  return JoinPath(ProgramDirectory(), "ersetzt");
}

RunUndo::RunUndo(std::string folder, FileDescriptor lock, UndoNotes notes)
    : most_(0),
      folder_(std::move(folder)),
      lock_(std::move(lock)),
      items_(std::move(notes.items)),
      uncertain_(!notes.owner),
      owner_(std::move(notes.owner)) {
  for (const UndoItem& item : items_) {
    if (const auto mark = item.kept.empty() ? std::nullopt : MarkOf(item.kept)) kept_ += mark->size;
  }
}

std::vector<std::shared_ptr<RunUndo>> FindKeptUndo(const std::string& directory,
                                                   const std::string& registry) {
  std::vector<std::shared_ptr<RunUndo>> kept;
  for (const std::string& folder : FoldersIn(directory)) {
    FileDescriptor lock = OpenDirectory(folder);
    if (!lock || !Lock(lock)) continue;
    auto notes = NotesIn(folder);
    if (notes && notes->owner && notes->owner->registry == registry)
      kept.push_back(std::shared_ptr<RunUndo>(new RunUndo(folder, std::move(lock), *std::move(notes))));
  }
  return kept;
}

UndoReport FinishAbandonedUndo(const std::string& directory, const CancelCheck& cancelled) {
  UndoReport report;
  for (const std::string& folder : FoldersIn(directory)) {
    FileDescriptor lock = OpenDirectory(folder);
    if (!lock || !Lock(lock)) continue;
    auto notes = NotesIn(folder);
    const bool begun = notes && !notes->owner;
    const bool left =
        notes ? notes->owner && !FileExists(notes->owner->registry) : !FileExists(JoinPath(folder, kNotes));
    if (left) RemoveTree(folder);
    if (begun) report.Add(RunUndo(folder, std::move(lock), *std::move(notes)).Undo(cancelled));
  }
  return report;
}

bool UndoReport::Empty() const {
  return removed == 0 && restored == 0 && changed.empty() && notKept.empty() && failed.empty() &&
         elsewhere.empty();
}

void UndoReport::Add(UndoReport other) {
  removed += other.removed;
  restored += other.restored;
  for (auto list : {&UndoReport::changed, &UndoReport::notKept, &UndoReport::failed, &UndoReport::elsewhere})
    std::ranges::move(other.*list, std::back_inserter(this->*list));
}

std::string UndoText(const UndoReport& report) {
  constexpr std::size_t kMostNamed = 5;
  std::string text;
  const auto add = [&](const std::string& line) { text += (text.empty() ? "" : "\n") + line; };
  const auto count = [&](std::size_t number, TextId one, TextId many) {
    if (number > 0) add(number == 1 ? std::string(Text(one)) : Format(Text(many), number));
  };
  const auto list = [&](const std::vector<std::string>& paths, TextId one, TextId many) {
    count(paths.size(), one, many);
    for (std::size_t i = 0; i < paths.size() && i < kMostNamed; ++i) add("    " + paths[i]);
    if (paths.size() > kMostNamed) add(Format(Text(texts::UndoMore), paths.size() - kMostNamed));
  };
  count(report.removed, texts::UndoOneRemoved, texts::UndoManyRemoved);
  count(report.restored, texts::UndoOneRestored, texts::UndoManyRestored);
  list(report.elsewhere, texts::UndoOneElsewhere, texts::UndoManyElsewhere);
  list(report.changed, texts::UndoOneChanged, texts::UndoManyChanged);
  list(report.notKept, texts::UndoOneNotKept, texts::UndoManyNotKept);
  list(report.failed, texts::UndoOneFailed, texts::UndoManyFailed);
  return report.Empty() ? std::string(Text(texts::UndoNothing)) : text;
}

}  // namespace ts5
