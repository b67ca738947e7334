// Lets one file after another sound at once, beside the jobs: each is played by the player that takes it, as
// if it were the only title of a job that nobody sees.
//
// Everything happens on the thread that owns the listener; devices are looked for and titles played on
// others, and nothing waits for them.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "app/run/desktop_run_host.h"
#include "app/shell/background_worker.h"
#include "frame/job_runner.h"
#include "frame/player_control.h"
#include "platform/sound/sound_places.h"

namespace ts5 {

class Listener : public QObject {
  Q_OBJECT

 public:
  // findPlaces is asked before each title, on a thread of its own, so that devices may come and go.
  Listener(ModuleFinder modules, std::function<SoundPlaces()> findPlaces,
           std::shared_ptr<PracticeBook> practices = {}, QObject* parent = nullptr);
  ~Listener() override;

  // In place of what plays; it begins as soon as that has ended.
  void Play(const FileListEntry& entry, const Settings& settings);
  void Stop();
  void SetVolume(std::int32_t hundredths);
  // The window goes: what plays ends, and nothing is reported any more.
  void Close();

  // What was asked for last; nothing before the first.
  [[nodiscard]] const std::optional<FileListEntry>& Title() const { return title_; }
  // From Play until the title has ended or was stopped.
  [[nodiscard]] bool Busy() const { return looking_ || going_.has_value(); }
  // To look at what plays and to steer it; nullptr while nothing does.
  [[nodiscard]] PlayerControl* Control() const;

 signals:
  void Asked();    // for another title
  void Changed();  // whether it plays
  // It does not sound, or no longer: why, and what to do.
  void Refused(const QString& why);

 private:
  struct Going {
    std::unique_ptr<Job> job;
    std::shared_ptr<DesktopRunHost> host;
  };

  void Begin();
  void Launch(const SoundPlaces& places);
  void Take(RunNews news);

  ModuleFinder modules_;
  std::function<SoundPlaces()> findPlaces_;
  std::shared_ptr<PracticeBook> practices_;
  Settings settings_;
  std::int32_t volume_ = 0;
  std::optional<FileListEntry> title_;
  bool looking_ = false;  // for devices
  bool again_ = false;    // the title is to begin when what plays has ended
  std::optional<Going> going_;
  JobRunner runner_;
  BackgroundWorker worker_;
};

}  // namespace ts5
