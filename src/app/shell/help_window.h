// The help: its own window with contents, the way back and forward, and a search in the page. Topics are
// pages of the program's resources, opened by their names.
#pragma once

#include <QMainWindow>
#include <QRect>
#include <QString>
#include <vector>

class QAction;
class QLineEdit;
class QTextBrowser;
class QTreeWidget;
class QTreeWidgetItem;

namespace ts5 {

// One line of the contents: a chapter has no topic.
struct HelpEntry {
  QString title;
  QString topic;  // "quellmedium.htm"
};

// The page of that name, without regard to case, with or without its anchor; the contents page for "" and for
// a name that no page has.
[[nodiscard]] QString HelpPage(const QString& topic);
// Chapters and topics in the order of the contents page.
[[nodiscard]] std::vector<HelpEntry> HelpContents();

inline constexpr int kNarrowestHelp = 340;
// Where the window opens while a dialog waits: beside it, on the wider side, so that both can be used. The
// dialog goes aside where that gives room.
struct HelpPlace {
  QPoint dialog;
  QRect help;
};
[[nodiscard]] HelpPlace PlaceBeside(const QRect& dialog, const QRect& screen, const QSize& wanted);

class HelpWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit HelpWindow(QWidget* parent = nullptr);

  // Shows the window and the topic in it; "" is the contents.
  void OpenTopic(const QString& topic);
  [[nodiscard]] QString CurrentTopic() const;

  // The next place of the text in the page, from the cursor on and around its end. False: it is nowhere.
  bool FindNext(const QString& text, bool backward = false);

 protected:
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void BuildContents();
  void BuildToolBar();
  void ApplyColours();
  void FollowPage();
  void StandBeforeDialogs();

  QTreeWidget* contents_;
  QTextBrowser* page_;
  QLineEdit* searchField_ = nullptr;
};

}  // namespace ts5
