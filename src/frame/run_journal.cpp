#include "frame/run_journal.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <utility>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "platform/base/clock.h"
#include "platform/base/text.h"
#include "platform/files/disk_calls.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/store/registry.h"

namespace ts5 {
namespace {

constexpr std::string_view kExtension = ".run";
constexpr std::uint64_t kMaxJournal = std::uint64_t{512} << 20;

// The journals of a directory, the oldest first.
std::vector<std::string> JournalFiles(const std::string& directory) {
  std::vector<std::string> files;
  std::error_code error;
  for (auto entry = std::filesystem::directory_iterator(directory, error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (entry->path().extension().native() == kExtension) files.push_back(entry->path().native());
  }
  std::ranges::sort(files);
  return files;
}

// False when another program has it.
bool Lock(const FileDescriptor& file) {
  return Retry([&] { return ::flock(file.Get(), LOCK_EX | LOCK_NB); }) == 0;
}

// The name sorts by the time.
std::string NameAt(std::int64_t seconds, int attempt) {
  return Format("%012lld-%d-%d", static_cast<long long>(seconds), static_cast<int>(::getpid()), attempt) +
         std::string(kExtension);
}

// Where the file that was announced stands now: under its name, or under another number.
std::optional<std::string> PlaceOf(const ItemRecord& record) {
  if (!record.staged) return std::nullopt;
  const std::string& name = record.item.destination;
  if (MarkOf(name) == record.staged) return name;
  return FindMarked(std::string(DirectoryOf(name)), *record.staged);
}

}  // namespace

std::string JournalDirectory(const std::string& registryPath) {
  return registryPath.empty() || registryPath == kRegistryInMemory ? std::string() : registryPath + "-runs";
}

RunJournal::RunJournal(std::string path, FileDescriptor file, RunPlan plan)
    : path_(std::move(path)), file_(std::move(file)), plan_(std::move(plan)) {}

std::optional<RunJournal> RunJournal::Begin(const std::string& directory, RunPlan plan,
                                            const ModuleFinder& modules) {
  constexpr int kMaxAttempts = 1000;
  if (Failed(MakeDirectories(directory))) return std::nullopt;
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    std::string path = JoinPath(directory, NameAt(plan.begun, attempt));
    FileDescriptor file(Disk().Create(path, 0600));
    if (!file && errno == EEXIST) continue;
    if (!file || !Lock(file)) return std::nullopt;
    const Bytes record = PlanRecord(plan, modules);
    RunJournal journal(std::move(path), std::move(file), std::move(plan));
    if (!journal.Append(record)) return std::nullopt;
    return journal;
  }
  return std::nullopt;
}

Result<RunJournal> RunJournal::Reopen(const std::string& path, const ModuleFinder& modules) {
  FileDescriptor file(Retry([&] { return ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW); }));
  if (!file) return Failure(Outcome::SourceFailed);
  // Whoever had the lock before may have removed the file.
  if (!Lock(file) || !FileExists(path)) return Failure(Outcome::InUse);
  const auto bytes = ReadFile(path, kMaxJournal);
  if (!bytes) return Failure(bytes.error());
  auto content = ReadJournal(*bytes, modules);
  if (!content) return Failure(content.error());
  RunJournal journal(path, std::move(file), std::move(content->plan));
  journal.size_ = content->size;
  if (content->size < bytes->size()) (void)Disk().Truncate(journal.file_.Get(), content->size);
  std::map<std::size_t, ItemRecord> announced;
  for (ItemRecord& record : content->items) {
    (record.staged ? announced : journal.done_).insert_or_assign(record.index, std::move(record));
  }
  for (auto& [index, record] : announced) {
    if (journal.done_.contains(index)) continue;
    auto place = PlaceOf(record);
    if (!place) continue;
    record.item.destination = *std::move(place);
    record.staged.reset();
    journal.Book(record);
    journal.done_.emplace(index, std::move(record));
  }
  return journal;
}

const ItemRecord* RunJournal::Done(std::size_t index) const {
  const auto found = done_.find(index);
  return found == done_.end() ? nullptr : &found->second;
}

void RunJournal::Announce(std::span<const ItemRecord> records) {
  ByteWriter out;
  for (const ItemRecord& record : records) out.Append(RecordOf(record));
  if (out.Size() > 0 && Append(out.View()) && Disk().Flush(file_.Get()) != 0) Remove();
}

void RunJournal::Book(const ItemRecord& record) {
  (void)Append(RecordOf(record));
}

// A journal that lacks something would have things done twice: without it they are done by the user's choice.
bool RunJournal::Append(ByteView bytes) {
  if (!file_) return false;
  if (Failed(WriteAll(file_.Get(), size_, bytes))) {
    Remove();
    return false;
  }
  size_ += bytes.size();
  return true;
}

void RunJournal::Remove() {
  if (!file_) return;
  (void)Disk().Unlink(path_);
  (void)file_.Close();
}

std::vector<std::shared_ptr<RunJournal>> FindInterruptedRuns(const std::string& directory,
                                                             const ModuleFinder& modules) {
  std::vector<std::shared_ptr<RunJournal>> runs;
  for (const std::string& path : JournalFiles(directory)) {
    auto journal = RunJournal::Reopen(path, modules);
    if (journal) {
      runs.push_back(std::make_shared<RunJournal>(*std::move(journal)));
    } else if (journal.error() == Outcome::ReadFailed) {
      (void)RemoveFile(path);
    }
  }
  return runs;
}

std::string InterruptedText(const RunJournal& run) {
  const RunPlan& plan = run.Plan();
  const CivilTime begun = LocalTime(std::chrono::system_clock::time_point(std::chrono::seconds(plan.begun)));
  return Format(Text(texts::InterruptedRun), Descriptor(plan.job.filter).Name(), plan.job.title, begun.day,
                begun.month, begun.year, begun.hour, begun.minute, run.DoneCount(), plan.targets.size());
}

}  // namespace ts5
