// A job: the complete configuration of one filter. A plain value: a copy is deep, parameters and lists
// included, and has a run state of its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "frame/file_list.h"
#include "frame/filter_id.h"
#include "frame/parameters.h"
#include "frame/run_state.h"
#include "platform/store/registry_values.h"

namespace ts5 {

inline constexpr std::size_t kMaxTitleCharacters = 12;
inline constexpr std::size_t kMaxDescriptionCharacters = 79;
inline constexpr std::uint32_t kNewFilterStatus = 0x01000000;  // tile expanded
// MIDI devices are stored as this number plus their index.
inline constexpr std::int32_t kMidiDeviceBase = 1000;
inline constexpr std::int32_t kNoDevice = -1;

// Parameters of any filter as a value: copying clones them. Empty when the job has no filter, or one of which
// this build has no module.
class ParametersValue {
 public:
  ParametersValue() = default;
  ParametersValue(std::unique_ptr<FilterParameters> parameters)
      : pointer_(std::move(parameters)) {}  // NOLINT
  ParametersValue(const ParametersValue& other)
      : pointer_(other.pointer_ ? other.pointer_->Clone() : nullptr) {}
  ParametersValue(ParametersValue&&) noexcept = default;
  ParametersValue& operator=(ParametersValue other) noexcept {
    pointer_ = std::move(other.pointer_);
    return *this;
  }
  ~ParametersValue() = default;

  explicit operator bool() const { return pointer_ != nullptr; }
  [[nodiscard]] FilterParameters* Get() { return pointer_.get(); }
  [[nodiscard]] const FilterParameters* Get() const { return pointer_.get(); }
  FilterParameters& operator*() { return *pointer_; }
  const FilterParameters& operator*() const { return *pointer_; }
  // Those of the filter that P belongs to; nullptr when they are another's or there are none.
  template <typename P>
  [[nodiscard]] P* If() {
    return dynamic_cast<P*>(pointer_.get());
  }
  template <typename P>
  [[nodiscard]] const P* If() const {
    return dynamic_cast<const P*>(pointer_.get());
  }

 private:
  std::unique_ptr<FilterParameters> pointer_;
};

// The run fields of a job. A copy of a job does not run: it starts with fields of its own. The worker of a
// run holds them as well, so that a job may go away before its worker does.
class JobRunHandle {
 public:
  JobRunHandle() : run_(std::make_shared<JobRun>()) {}
  // Those of another job, for a run of its with other sources.
  explicit JobRunHandle(std::shared_ptr<JobRun> run) : run_(std::move(run)) {}
  JobRunHandle(const JobRunHandle&) : JobRunHandle() {}
  JobRunHandle(JobRunHandle&& other) noexcept = default;
  JobRunHandle& operator=(const JobRunHandle&) { return *this; }
  JobRunHandle& operator=(JobRunHandle&&) noexcept = default;
  ~JobRunHandle() = default;

  JobRun* operator->() const { return run_.get(); }
  [[nodiscard]] const std::shared_ptr<JobRun>& Shared() const { return run_; }

 private:
  std::shared_ptr<JobRun> run_;
};

// The layout of the job's window; all zero when there is none.
struct SizingRectangle {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
  bool operator==(const SizingRectangle&) const = default;
};

[[nodiscard]] constexpr std::array<std::uint32_t, kFilterCount> NewFilterStatus() {
  std::array<std::uint32_t, kFilterCount> status{};
  status.fill(kNewFilterStatus);
  return status;
}

struct Job {
  std::string title;        // at most kMaxTitleCharacters
  std::string description;  // at most kMaxDescriptionCharacters

  std::int32_t sourceDrive = 0;  // 0 is c:; kListModeDrive: the free file list
  DirectorySelection directory;
  bool subdirectories =
      false;  // files below the directory are shown as well; their names hold where they lie
  FreeFileList files;
  bool fileWindowMaximised = false;  // list mode only
  SizingRectangle sizing;

  FilterId filter = FilterId::None;
  FilterId previousFilter = FilterId::None;
  bool filterFixed = false;
  std::array<std::uint32_t, kFilterCount> filterStatus = NewFilterStatus();
  ParametersValue parameters;  // of the current filter
  // Parameter values of the job's key as they were last read or taken over, of whatever filter: a switch of
  // the filter reads from here, and a filter without a module keeps its values here.
  RegistryValues stored;

  std::string destinationName;  // file or directory
  std::string targetDirectory;  // of automatic names, before what the settings say; "" as they say
  bool destinationIsScreen = false;
  std::int32_t destinationDevice = 0;  // index; a MIDI device is kMidiDeviceBase + index

  JobRunHandle run;

  [[nodiscard]] JobId Id() const { return run->id; }
  [[nodiscard]] SourceMode Mode() const {
    return sourceDrive == kListModeDrive ? SourceMode::List : SourceMode::Directory;
  }
  [[nodiscard]] RunState State() const { return run->state.load(); }
  [[nodiscard]] bool MayChange() const { return MayChangeJob(State()); }
};

// The items of a run: the selected files of the directory; in list mode the selected entries, or all when
// none is selected.
[[nodiscard]] std::size_t ItemCount(const Job& job);
// An index past the end takes the last one; "" when there is none.
[[nodiscard]] std::string ItemSource(const Job& job, std::size_t index);
[[nodiscard]] std::optional<FileListEntry> ItemEntry(const Job& job, std::size_t index);

// A job that is the same but for its sources: only these of them, in their order. Those that it does not name
// itself, as of a tree that was searched, become its free file list.
[[nodiscard]] Job WithOnly(const Job& job, const std::vector<std::string>& sources);

}  // namespace ts5
