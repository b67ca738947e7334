// The two bars of music around the hit that is looked at, under the list of hits. They are read in the
// background; a file that no longer has the hit shows that in words.
#pragma once

#include <QWidget>
#include <atomic>
#include <memory>
#include <optional>

#include "app/shell/background_worker.h"
#include "preview/hit_line.h"

namespace ts5 {

class HitMusic : public QWidget {
  Q_OBJECT

 public:
  explicit HitMusic(QWidget* parent = nullptr);
  ~HitMusic() override;

  // notes: how many the melody has. Nothing: there is no hit to look at.
  void Show(const std::optional<SearchHit>& hit, std::size_t notes = 0);
  // What is shown, once it has been read.
  [[nodiscard]] const std::optional<preview::MusicLine>& Line() const { return line_; }
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  struct Reading;  // shared with the worker

  std::optional<SearchHit> hit_;
  std::optional<preview::MusicLine> line_;
  bool failed_ = false;
  std::shared_ptr<Reading> reading_;
  BackgroundWorker worker_;
};

}  // namespace ts5
