// The one state of the program, from its start to its end: settings, volumes, devices, jobs and their runs.
// It lives on the window's thread and outlives the main window.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/filter_bar.h"
#include "frame/job_runner.h"
#include "frame/jobs.h"
#include "frame/settings.h"
#include "frame/siblings.h"
#include "frame/ui/qt_event_loop.h"
#include "platform/registry.h"
#include "platform/strings.h"
#include "platform/volumes.h"

namespace ts5 {

// The devices found at the start, by the names that the user sees.
struct DeviceLists {
  std::vector<std::string> audioInputs;
  std::vector<std::string> audioOutputs;
  std::vector<std::string> midiOutputs;
  std::vector<std::string> writers;
  std::vector<std::string> printers;

  [[nodiscard]] DeviceCounts Counts() const {
    return {audioOutputs.size(), midiOutputs.size(), printers.size(), writers.size()};
  }
};

struct StartOptions {
  std::string registryPath = DefaultRegistryPath();
  std::optional<DeviceLists> devices = {};  // in place of those of the machine
  std::optional<VolumeTable> volumes = {};  // likewise
  ModuleFinder modules = {};                // likewise; empty: the filters of this build
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
  [[nodiscard]] const SiblingPrograms& Siblings() const { return siblings_; }
  [[nodiscard]] Jobs& GetJobs() { return *jobs_; }
  [[nodiscard]] JobRunner& Runner() { return runner_; }
  [[nodiscard]] Registry& GetRegistry() { return *registry_; }
  [[nodiscard]] EventLoop& Loop() { return loop_; }
  [[nodiscard]] const FilterModule* Module(FilterId filter) const { return modules_(filter); }
  // What the user has to be told after the start, e.g. about a registry that was damaged.
  [[nodiscard]] const std::vector<std::string>& Notices() const { return notices_; }

  // Name of the last file-list file of this session.
  std::string lastFileList;
  // The result file of a melody search that was looked at last.
  std::string lastResultFile;

  // Settings and jobs to the registry, in one step; a text for the user when that failed.
  [[nodiscard]] std::optional<std::string> Save();
  // Ends all runs. True when none is left.
  bool StopRuns() { return runner_.Shutdown(); }

 private:
  void OpenRegistry(const std::string& path);

  std::function<void(TextId)> announce_;
  std::vector<std::string> notices_;
  std::string registryPath_;
  std::optional<Registry> registry_;
  ModuleFinder modules_;
  SiblingPrograms siblings_;
  VolumeTable volumes_;
  DeviceLists devices_;
  Settings settings_;
  QtEventLoop loop_;
  JobRunner runner_;
  std::unique_ptr<Jobs> jobs_;
  bool jobsReadable_ = true;
};

}  // namespace ts5
