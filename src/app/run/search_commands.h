// What can be done with the hits of a melody search: read them, print them, copy them, hear them, and show
// them in the sequencer or the score program.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>
#include <string>

#include "app/run/run_panels.h"
#include "app/shell/active_job.h"
#include "app/shell/desk.h"
#include "frame/search_hit.h"
#include "platform/base/outcome.h"
#include "platform/base/strings.h"
#include "search/hit_player.h"
#include "search/ui/results_printing.h"

namespace ts5 {

class Application;
class SiblingVisit;

class SearchCommands : public QObject {
 public:
  SearchCommands(Desk& desk, ActiveJob& active, RunPanels& panels, Application& application);
  ~SearchCommands() override;

  // The window goes: what sounds ends, and nothing is waited for that may take long.
  void Close();

 private:
  // The list of hits of a new panel.
  void Attach(const RunPanel& panel);
  void Refresh();  // the commands
  [[nodiscard]] RunPanel& Panel() const { return panels_.Current(); }
  [[nodiscard]] std::optional<std::size_t> Row() const;  // of the hit that the commands mean
  [[nodiscard]] bool SiblingIsKnown() const;
  [[nodiscard]] std::optional<std::string> Device() const;  // nothing: there is none
  void ShowResults();
  void Print();
  void Copy();
  void ShowMenu(const QPoint& position);
  void TogglePlaying();
  void PlayBrowsed();  // the hit that the arrow keys have come to
  void PlayingEnded(int round, Outcome outcome);
  void ShowHitInApplication();
  void TellLater(TextId text);

  Desk& desk_;
  ActiveJob& active_;
  RunPanels& panels_;
  Application& application_;
  std::unique_ptr<ResultsPrinting> printing_;
  std::unique_ptr<HitPlayer> player_;
  bool playing_ = false;
  QTimer browsed_;  // until the arrow keys rest
  int round_ = 0;   // tells the end of the hit that plays from that of one stopped before
  std::shared_ptr<SiblingVisit> visit_;
};

}  // namespace ts5
