// A look at a score of any format, in a window of its own that stays open beside the others. The file is read
// in the background; a window that closes stops it.
#pragma once

#include <QMainWindow>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "frame/ui/dialog_host.h"
#include "preview/score_pages.h"

class QAction;
class QLabel;
class QSpinBox;
class QStackedWidget;

namespace ts5::preview {

class PageView;

// Whether a file by its name can be looked at.
[[nodiscard]] bool IsScoreName(const std::string& path);

// Opens a window with the file in it, which can be used whatever dialog the owner shows, and goes with the
// owner. host: for its help; both outlive it.
void ShowNotation(const std::string& path, DialogHost& host, const QWidget* owner);
// The same at the system in which a hit of the search begins.
void ShowNotation(const SearchHit& hit, DialogHost& host, const QWidget* owner);

class PreviewWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit PreviewWindow(DialogHost& host);
  ~PreviewWindow() override;

  // Reads the file and shows its first page, or the system in which a hit of the search begins.
  void Open(const std::string& path, const std::optional<SearchHit>& hit = {});
  [[nodiscard]] const ScorePages* Pages() const { return pages_.get(); }
  [[nodiscard]] PageView* View() const { return view_; }
  // What is shown instead of a page, "" while there is one.
  [[nodiscard]] QString Message() const;

 signals:
  // The file is shown, or the message says why not.
  void Ready();

 private:
  // What reading gave: pages, or a message.
  struct Read {
    std::unique_ptr<ScorePages> pages;
    std::string message;
  };
  [[nodiscard]] static Read ReadFile(const std::string& path, const std::stop_token& stop);
  void BuildToolBar();
  void Take(Read read, const std::optional<SearchHit>& hit);
  void Refresh();

  std::unique_ptr<ScorePages> pages_;
  QStackedWidget* stack_;
  QLabel* message_;
  PageView* view_;
  QSpinBox* number_ = nullptr;
  QAction* first_ = nullptr;
  QAction* previous_ = nullptr;
  QAction* next_ = nullptr;
  QAction* last_ = nullptr;
  unsigned round_ = 0;
  std::jthread reader_;
};

}  // namespace ts5::preview
