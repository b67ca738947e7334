// The pages of the parameters that both score filters have: PLAYBACK2 (staves), PLAYBACK3 and PLAYBACK4
// (articulation, parameter sets), PLAYBACK5 (channels and sounds), PLAYBACK6 (dynamics).
#pragma once

#include <QObject>
#include <memory>
#include <string>

#include "frame/ui/dialog_host.h"
#include "score/score_at_hand.h"

class QTabWidget;
class QWidget;

namespace Ui {
class PLAYBACK2;
class PLAYBACK3;
class PLAYBACK4;
class PLAYBACK6;
}  // namespace Ui

namespace ts5 {

class SoundPage;

class ScorePages : public QObject {
  Q_OBJECT

 public:
  enum class Purpose { Play, Write };

  // setDirectory: where parameter sets lie. The pages are added to tabs, whose window they belong to.
  ScorePages(Purpose purpose, std::string setDirectory, DialogHost& host, QTabWidget& tabs);
  ~ScorePages() override;

  // The score that is at hand, nullptr for none, and the parameters as they are now.
  void Show(std::shared_ptr<const ScoreAtHand> score, const ScoreParameters& parameters);
  [[nodiscard]] const ScoreParameters& Parameters() const { return parameters_; }
  // What holds for a whole title cannot be changed while it plays.
  void SetPlaying(bool playing);

 signals:
  void Changed();  // by the user

 private:
  void Bind();
  void ShowValues();
  void ShowStaves();
  void EnableMarks();
  void Take();
  void TakeStaves();
  void LoadSetOfUser();
  void SaveSetOfUser();

  std::string setDirectory_;
  DialogHost& host_;
  QWidget* window_;
  std::unique_ptr<Ui::PLAYBACK2> staves_;
  std::unique_ptr<Ui::PLAYBACK3> first_;
  std::unique_ptr<Ui::PLAYBACK4> second_;
  std::unique_ptr<Ui::PLAYBACK6> dynamics_;
  SoundPage* sounds_;
  QWidget* pages_[4];  // of the templates above
  std::shared_ptr<const ScoreAtHand> score_;
  ScoreParameters parameters_;
  bool showing_ = false;
};

}  // namespace ts5
