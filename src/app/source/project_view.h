// What the list of a disc project shows beside its files: how long it is against the disc in the recorder,
// and the titles and performers that its tracks get.
#pragma once

#include <QObject>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "app/shell/active_job.h"
#include "app/shell/background_worker.h"
#include "app/source/file_view_model.h"
#include "app/source/source_area.h"
#include "app/source/source_commands.h"
#include "frame/jobs.h"
#include "platform/disc/cd_text.h"

namespace ts5 {

class ProjectView : public QObject {
 public:
  ProjectView(ActiveJob& active, SourceArea& area, SourceCommands& source, const Jobs& jobs);

  // After the job, its list or its recorder may have changed. recorder: its path, "" for none.
  void Refresh(const std::string& recorder);
  // The disc in the recorder may be another one.
  void ForgetDisc() { asked_.reset(); }

 private:
  void ShowLength(const Job& job);
  void AskRecorder(const std::string& recorder);
  void ShowTexts();
  void ReadTexts(const Job& job);
  void TakeText(std::size_t row, FileViewModel::TrackText which, const QString& text);

  ActiveJob& active_;
  SourceArea& area_;
  SourceCommands& source_;
  const Jobs& jobs_;
  std::optional<std::string> asked_;                       // the recorder whose disc is known
  std::optional<std::uint32_t> seconds_;                   // that are free on it
  std::map<std::string, CdText::Entry, std::less<>> own_;  // what sources say of themselves
  std::set<std::string, std::less<>> reading_;
  bool texts_ = false;
  BackgroundWorker worker_;
};

}  // namespace ts5
