// Lets a run be undone: what it made goes into the wastebasket, and what it replaced comes back.
//
//   auto undo = std::make_shared<RunUndo>(directory, most);
//   undo->Keep(target);                // before it is replaced
//   ... the new file gets its place ...
//   undo->Made(target);
//   const UndoReport report = undo->Undo();
//
// Replaced files are kept, as a second name of the same file where the file system knows such, else as a
// copy, in a folder of the run's own, which goes with the object, or stays for the next start of the program
// when it was told to (KeepFor): so there is a way back until the next run of the job. A file that was
// changed after the run is not touched. Whatever was done is not done twice. An undo that is cut, by the end
// of the program or by its death, is finished at the next start: its folder stays, with notes of what it had
// set out to do. One thread at a time.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/undo_notes.h"
#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5 {

// How many bytes of replaced files are kept at most, of all runs together.
inline constexpr std::uint64_t kMostKept = std::uint64_t{2} << 30;

struct UndoReport {
  std::size_t removed = 0;   // into the wastebasket
  std::size_t restored = 0;  // replaced files that are there again
  // Files that stay as they are, or did not come back to their places.
  std::vector<std::string> changed = {};    // since the run
  std::vector<std::string> notKept = {};    // what they replaced was too much to be kept
  std::vector<std::string> failed = {};     // cannot be moved
  std::vector<std::string> elsewhere = {};  // replaced files that got another name

  [[nodiscard]] bool Empty() const;
  void Add(UndoReport other);
};

class RunUndo {
 public:
  // directory: where the folder comes into being when something is to be kept.
  RunUndo(std::string directory, std::uint64_t most) : directory_(std::move(directory)), most_(most) {}
  ~RunUndo();
  RunUndo(const RunUndo&) = delete;
  RunUndo& operator=(const RunUndo&) = delete;

  // What stands there is about to be replaced. Cancelled: while it was copied; it is not to be replaced then.
  // Where it cannot be kept it is replaced all the same, and the report will say so.
  [[nodiscard]] Outcome Keep(const std::string& target, const CancelCheck& cancelled = {});
  // The run has made this file, and so many directories above it.
  void Made(const std::string& target, std::size_t newDirectories = 0);
  // It has changed one that it had made.
  void Changed(const std::string& target);

  // The folder stays when the object goes, and FindKeptUndo finds it. False when that cannot be noted.
  bool KeepFor(const UndoOwner& owner);
  // It goes with the object after all, as the job has run again.
  void Forget() { owner_.reset(); }
  [[nodiscard]] const std::optional<UndoOwner>& Owner() const { return owner_; }

  // There is something to undo.
  [[nodiscard]] bool Any() const;
  [[nodiscard]] std::uint64_t Kept() const { return kept_; }  // bytes
  // Replaced files that could not be kept.
  [[nodiscard]] std::size_t NotKept() const;
  // A cancelled one can be gone on with, here or after the next start.
  [[nodiscard]] UndoReport Undo(const CancelCheck& cancelled = {});

 private:
  // One that was cut or kept; folder is locked.
  RunUndo(std::string folder, FileDescriptor lock, UndoNotes notes);
  friend UndoReport FinishAbandonedUndo(const std::string& directory, const CancelCheck& cancelled);
  friend std::vector<std::shared_ptr<RunUndo>> FindKeptUndo(const std::string& directory,
                                                            const std::string& registry);

  [[nodiscard]] bool OpenFolder();
  [[nodiscard]] Outcome KeepAs(const std::string& path, const std::string& kept, std::uint64_t size,
                               const CancelCheck& cancelled);
  void DropPending();
  [[nodiscard]] bool NoteDown(const std::optional<UndoOwner>& owner) const;
  void TakeBack(UndoItem& item, UndoReport& report);
  void BringBack(UndoItem& item, UndoReport& report);
  void RemoveEmptied() const;
  [[nodiscard]] bool RescueKept() const;

  std::string directory_;
  std::uint64_t most_;
  std::string folder_;
  FileDescriptor lock_;  // for as long as the folder is this run's
  std::uint64_t kept_ = 0;
  std::size_t number_ = 0;
  std::optional<UndoItem> pending_;  // kept for a target that has not its place yet
  std::uint64_t pendingSize_ = 0;
  std::vector<UndoItem> items_;
  std::map<std::string, std::size_t, std::less<>> places_;  // of paths in items_
  bool cut_ = false;                                        // an undo has begun and not come to its end
  bool uncertain_ = false;                                  // how far it came is not known
  std::optional<UndoOwner> owner_;                          // for whom the folder stays
};

// Where the runs of the program keep what they replace.
[[nodiscard]] std::string UndoDirectory();
// What sessions on a registry have kept there, for as long as the objects live no other program's.
[[nodiscard]] std::vector<std::shared_ptr<RunUndo>> FindKeptUndo(const std::string& directory,
                                                                 const std::string& registry);
// Finishes what killed programs had begun to undo there, and removes what else they left, or kept for a
// registry that is gone.
UndoReport FinishAbandonedUndo(const std::string& directory, const CancelCheck& cancelled = {});

// What was done, and what not and why, in German.
[[nodiscard]] std::string UndoText(const UndoReport& report);

}  // namespace ts5
