// Reads the facts of the files in a view, in the background: first of those in sight, then of the selected
// ones, and of all where the order of the list depends on them. What has been read is remembered.
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "app/shell/background_worker.h"
#include "app/source/file_view.h"
#include "frame/file_facts.h"

namespace ts5 {

class FactsReading : public QObject {
  Q_OBJECT

 public:
  // memoryFile: where facts are remembered between sessions; "" nowhere.
  FactsReading(FileView& view, FactsReader reader, std::string memoryFile);
  ~FactsReading() override;

  // Something else may be to be read.
  void Wake() { timer_.start(); }
  // Nothing is being read or about to be.
  [[nodiscard]] bool Idle() const { return !Busy() && !timer_.isActive(); }

 signals:
  void Read();

 private:
  struct Wanted {
    std::size_t entry;
    std::string path;
    SharedFacts known;
    bool music = true;  // not only size and date
  };
  struct Piece;

  void ReadMemory();
  void Next();
  [[nodiscard]] std::vector<Wanted> MostWanted() const;
  void Take(const Piece& piece);
  [[nodiscard]] bool Busy() const { return working_ || remembering_; }
  void LeaveHanging();

  FileView& view_;
  FileViewModel& model_;
  FactsReader reader_;
  std::string memoryFile_;
  QTimer timer_;
  std::unique_ptr<BackgroundWorker> worker_;
  std::shared_ptr<Piece> working_;  // on the worker
  bool remembering_ = false;        // the file of the memory is being read
  int hangs_ = 0;
  std::chrono::steady_clock::time_point begun_;
};

}  // namespace ts5
