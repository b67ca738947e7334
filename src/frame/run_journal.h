// The journal of a run: a file that says what the run set out to do and how far it has come, so that after a
// crash or a power cut it can go on with the files that were not done.
//
//   auto journal = RunJournal::Begin(directory, plan, modules);
//   journal->Announce(records);   // before their files are put in place
//   journal->Book(record);        // each when it is done
//   journal->Remove();            // at the end
//
// An item is done when it was booked, or when the file that was announced for it is found in its place: so a
// run that ends between the two makes nothing twice. Announcements are on the disk before the files get their
// names. A journal is locked for as long as its object lives. What cannot be written ends the journal, not
// the run.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "frame/journal_records.h"
#include "platform/base/descriptor.h"

namespace ts5 {

class RunJournal {
 public:
  // Makes the directory. Nothing when there can be no journal: the run goes without.
  [[nodiscard]] static std::optional<RunJournal> Begin(const std::string& directory, RunPlan plan,
                                                       const ModuleFinder& modules);
  // InUse: a living program writes it, or offers to go on with it. ReadFailed: it broke off before its plan
  // was whole. WrongFormat: it is none, or of a filter or a version that this build does not have.
  [[nodiscard]] static Result<RunJournal> Reopen(const std::string& path, const ModuleFinder& modules);

  [[nodiscard]] const RunPlan& Plan() const { return plan_; }
  [[nodiscard]] std::size_t DoneCount() const { return done_.size(); }
  // What became of an item before this run began; nullptr when it is still to be done.
  [[nodiscard]] const ItemRecord* Done(std::size_t index) const;

  // What is about to be put in place, each with its staged file.
  void Announce(std::span<const ItemRecord> records);
  void Book(const ItemRecord& record);
  void Remove();

 private:
  RunJournal(std::string path, FileDescriptor file, RunPlan plan);
  [[nodiscard]] bool Append(ByteView bytes);

  std::string path_;
  FileDescriptor file_;
  std::uint64_t size_ = 0;
  RunPlan plan_;
  std::map<std::size_t, ItemRecord> done_;  // by the runs before this one
};

// Where the journals of the sessions on a registry lie; "" for one in memory.
[[nodiscard]] std::string JournalDirectory(const std::string& registryPath);
// The runs of a directory that were interrupted, the oldest first. While they are held no other program
// offers them.
[[nodiscard]] std::vector<std::shared_ptr<RunJournal>> FindInterruptedRuns(const std::string& directory,
                                                                           const ModuleFinder& modules);

// "Midi-Konverter (Default Job), begonnen am 26.11.2026 um 09:30: 123 von 500 Dateien fertig."
[[nodiscard]] std::string InterruptedText(const RunJournal& run);

}  // namespace ts5
