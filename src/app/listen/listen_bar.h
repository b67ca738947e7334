// The slim player under the list of files: what sounds, where it is, how loud, and stop; below it, on
// request, how it is practised.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QSlider>
#include <QTimer>
#include <QToolButton>

#include "app/listen/listener.h"
#include "frame/ui/elided_label.h"
#include "frame/ui/position_slider.h"
#include "frame/ui/practice_panel.h"

namespace ts5 {

class ListenBar : public QFrame {
  Q_OBJECT

 public:
  // The listener outlives the bar. volume: in hundredths of a decibel.
  ListenBar(Listener& listener, std::int32_t volume, QWidget* parent = nullptr);

  // Plays, pauses, goes on, or plays the title anew when it has ended.
  void TogglePlay();
  // Ends what plays; without anything the bar goes.
  void StopOrGo();

 signals:
  void AgainWanted();  // the title that has ended
  void VolumeChanged(std::int32_t hundredths);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  // In a narrow bar the position goes before the bar's number and the sign of the volume.
  [[nodiscard]] bool Narrow() const;
  void ShowTitle();
  void ShowName(const QString& name, const QString& path);
  void ShowRefusal(const QString& why);
  void Refresh();  // what moves while a title plays
  [[nodiscard]] QToolButton* MakeButton(const char* name, TextId text, std::string_view icon);

  Listener& listener_;
  QToolButton* play_;
  QToolButton* stop_;
  ElidedLabel* title_;
  PositionSlider* position_;
  QLabel* time_;
  QLabel* loudness_;  // the sign beside the volume
  QSlider* volume_;
  QToolButton* practise_;
  PracticePanel* practice_;
  bool refused_ = false;                      // in place of the title stands why it does not sound
  std::shared_ptr<const PlayerScore> shown_;  // of the title that was looked at last
  QTimer timer_;
};

}  // namespace ts5
