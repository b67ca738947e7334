// Over a file view without files: buttons for what can be done there.
#pragma once

#include <QLabel>
#include <QPushButton>
#include <QWidget>

namespace ts5 {

class EmptyNote : public QWidget {
  Q_OBJECT

 public:
  // Stands over the middle of the view, below the text of its first lines, and can be used while the view
  // cannot.
  explicit EmptyNote(QWidget* view);

  enum class Place { None, Directory, List };
  void ShowFor(Place place);

 signals:
  void ExamplesWanted();
  void MusicWanted();  // a folder is to be chosen
  void FilesWanted();  // files for the free file list are to be chosen

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Stand();

  QWidget* view_;
  QPushButton* music_;
  QPushButton* files_;
  QPushButton* examples_;
  QLabel* hint_;
};

}  // namespace ts5
