// The one state of the program, from its start to its end: settings, volumes, devices, jobs and their runs.
// It lives on the window's thread and outlives the main window.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/filter_bar.h"
#include "frame/job_runner.h"
#include "frame/jobs.h"
#include "frame/practice_book.h"
#include "frame/session_store.h"
#include "frame/settings.h"
#include "frame/siblings.h"
#include "frame/ui/qt_event_loop.h"
#include "platform/base/strings.h"
#include "platform/disc/volumes.h"
#include "platform/sound/sound_places.h"
#include "platform/store/registry.h"

namespace ts5 {

// By the names that the user sees.
struct SoundDevices {
  std::vector<std::string> audioInputs = {};
  std::vector<std::string> audioOutputs = {};
  std::vector<std::string> midiOutputs = {};
};
[[nodiscard]] SoundDevices FindSoundDevices();  // of this machine; may take some time

// The devices found at the start, and the sound devices that came later.
struct DeviceLists : SoundDevices {
  std::vector<std::string> writers;
  std::vector<std::string> printers;

  [[nodiscard]] DeviceCounts Counts() const {
    return {audioOutputs.size(), midiOutputs.size(), printers.size(), writers.size()};
  }
};

struct StartOptions {
  std::string registryPath = DefaultRegistryPath();
  std::optional<DeviceLists> devices = {};                   // in place of those of the machine
  std::optional<VolumeTable> volumes = {};                   // likewise
  ModuleFinder modules = {};                                 // likewise; empty: the filters of this build
  std::chrono::milliseconds patience = Registry::kPatience;  // with a registry that another program holds
};

class Application {
 public:
  // The steps of the start before the main window, in their order; each is announced with its text before it
  // begins. Nothing that is missing on this machine keeps the program from starting.
  explicit Application(const StartOptions& options, const std::function<void(TextId)>& announce = {});
  ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  [[nodiscard]] Settings& GetSettings() { return settings_; }
  [[nodiscard]] const DeviceLists& Devices() const { return devices_; }
  [[nodiscard]] const VolumeTable& Volumes() const { return volumes_; }
  // Drives and volumes are those of this machine, and may come and go.
  [[nodiscard]] bool OwnDrives() const { return ownDrives_; }
  // The devices are those of this machine, and more may come.
  [[nodiscard]] bool HasOwnDevices() const { return ownDevices_; }
  // Takes those that are new, behind the others: jobs know devices by their places in the lists. False when
  // there are none.
  bool AddSoundDevices(const SoundDevices& found);
  // Looks where music can sound now. May be called from any thread, and after the application has gone.
  [[nodiscard]] std::function<SoundPlaces()> SoundFinder() const;
  // Looks for them again; jobs whose drive has another letter now get it.
  void LookForDrives();
  [[nodiscard]] const SiblingPrograms& Siblings() const { return siblings_; }
  [[nodiscard]] Jobs& GetJobs() { return *jobs_; }
  [[nodiscard]] JobRunner& Runner() { return runner_; }
  [[nodiscard]] Registry& GetRegistry() { return *registry_; }
  [[nodiscard]] EventLoop& Loop() { return loop_; }
  // How files were practised, for all that plays.
  [[nodiscard]] const std::shared_ptr<PracticeBook>& Practices() const { return practices_; }
  [[nodiscard]] const FilterModule* Module(FilterId filter) const { return modules_(filter); }
  // What the user has to be told after the start, e.g. about a registry that was damaged.
  [[nodiscard]] const std::vector<std::string>& Notices() const { return notices_; }

  // Name of the last file-list file of this session.
  std::string lastFileList;
  // The result file of a melody search that was looked at last.
  std::string lastResultFile;

  // What the session changed to the registry, in one step; a text for the user when that failed.
  [[nodiscard]] std::optional<std::string> Save();
  // Ends all runs.
  void StopRuns() { runsLeft_ = !runner_.Shutdown(); }
  // A worker did not end in time: the program is to leave without taking away what the worker uses.
  [[nodiscard]] bool RunsLeft() const { return runsLeft_; }
  // Settings, jobs and what else the session holds as a text that "ts5-batch registry import" takes: the way
  // out when the registry cannot be written.
  [[nodiscard]] Outcome SaveElsewhere(const std::string& regFile);

  // Where runs keep their journals.
  [[nodiscard]] std::string Journals() const;

  // The file could not be used at the start. The session goes on without it, and its changes wait.
  [[nodiscard]] bool WaitsForRegistry() const { return waiting_; }
  [[nodiscard]] const std::string& RegistryPath() const { return registryPath_; }
  // What the jobs hold now counts as not changed by the user, where they could not be read.
  void CountAsUnchanged() {
    if (waiting_) session_.Adopt(*jobs_);
  }
  // Looks at the registry again: a file that was waited for and can be used now takes the session's changes;
  // what other programs changed is taken over. True when settings or jobs are others now.
  bool LookAtRegistry();

 private:
  void OpenRegistry();
  Outcome ReachRegistry(std::chrono::milliseconds patience);

  std::function<void(TextId)> announce_;
  std::vector<std::string> notices_;
  std::string registryPath_;
  std::chrono::milliseconds patience_;
  std::optional<Registry> registry_;
  bool waiting_ = false;  // registry_ is in memory, in place of the file
  ModuleFinder modules_;
  SiblingPrograms siblings_;
  VolumeTable volumes_;
  bool ownDrives_;
  bool ownDevices_;
  DeviceLists devices_;
  Settings settings_;
  QtEventLoop loop_;
  JobRunner runner_;
  std::unique_ptr<Jobs> jobs_;
  std::shared_ptr<PracticeBook> practices_ = std::make_shared<PracticeBook>();
  bool runsLeft_ = false;
  SessionStore session_;
};

}  // namespace ts5
