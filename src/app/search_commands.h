// What can be done with the hits of a melody search: read them, print them, copy them, hear them, and show
// them in the sequencer or the score program.
#pragma once

#include <QObject>
#include <memory>
#include <optional>
#include <string>

#include "frame/search_hit.h"
#include "platform/outcome.h"
#include "platform/strings.h"
#include "search/hit_player.h"
#include "search/ui/results_printing.h"

namespace ts5 {

class MainWindow;
class RunPanel;
class SiblingVisit;

class SearchCommands : public QObject {
 public:
  explicit SearchCommands(MainWindow& window);
  ~SearchCommands() override;

  // The list of hits of a new panel.
  void Attach(RunPanel& panel);
  // Which commands can be given now.
  void Refresh();
  [[nodiscard]] bool PlaysHit() const { return playing_; }
  // The window goes: what sounds ends, and nothing is waited for that may take long.
  void Close();

 private:
  [[nodiscard]] RunPanel& Panel() const;
  [[nodiscard]] std::optional<std::size_t> Row() const;  // of the hit that the commands mean
  [[nodiscard]] bool SiblingIsKnown() const;
  [[nodiscard]] std::optional<std::string> Device() const;  // nothing: there is none
  void ShowResults();
  void Print();
  void Copy();
  void ShowMenu(const QPoint& position);
  void TogglePlaying();
  void PlayingEnded(int round, Outcome outcome);
  void ShowHitInApplication();
  void Tell(TextId text);

  MainWindow& window_;
  std::unique_ptr<ResultsPrinting> printing_;
  std::unique_ptr<HitPlayer> player_;
  bool playing_ = false;
  int round_ = 0;  // tells the end of the hit that plays from that of one stopped before
  std::shared_ptr<SiblingVisit> visit_;
};

}  // namespace ts5
