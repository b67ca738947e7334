// PLAYBACK5: the channel and the sound of every staff and voice.
#pragma once

#include <QWidget>
#include <memory>

#include "score/score_at_hand.h"

namespace Ui {
class PLAYBACK5;
}

namespace ts5 {

class SoundPage : public QWidget {
  Q_OBJECT

 public:
  explicit SoundPage(QWidget* parent = nullptr);
  ~SoundPage() override;

  // score: nullptr while none is at hand.
  void ShowScore(std::shared_ptr<const ScoreAtHand> score, const ScoreParameters& parameters);

 signals:
  void ChannelChosen(int staff, int voice, int channel);  // 0..15
  void SoundChosen(int staff, int program);

 private:
  struct Row {
    int staff = 0;
    int voice = 0;
  };
  [[nodiscard]] Row Current() const;
  [[nodiscard]] bool HasSound(Row row) const;
  void UpdateControls();
  void ChooseSoundAt(const QPoint& place);

  std::unique_ptr<Ui::PLAYBACK5> ui_;
  std::shared_ptr<const ScoreAtHand> score_;
  ScoreParameters parameters_;
};

}  // namespace ts5
