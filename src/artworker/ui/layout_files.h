// The editor's layout as a file: begun from a template, loaded, saved.
#pragma once

#include <QObject>
#include <string>

#include "artworker/ui/scene.h"
#include "frame/ui/dialog_host.h"

class QWidget;

namespace ts5::artworker {

class LayoutFiles : public QObject {
  Q_OBJECT

 public:
  // scene, host and window outlive it. folder: of the layouts; file: the layout's, "" when there is none.
  LayoutFiles(Scene& scene, DialogHost& host, QWidget* window, std::string folder, std::string file);

  [[nodiscard]] const std::string& File() const { return file_; }
  // Where pictures from the clipboard are kept: beside the file, or in the program's folder until there is
  // one.
  [[nodiscard]] std::string PictureFolder() const;

  void BeginFromTemplate();
  void Load();
  void Save();

 signals:
  void Edited();       // the layout has changed
  void FileChanged();  // and has another file, or none any more
  void Begun();        // from a template

 private:
  void Replace(ArtworkLayout layout, std::string file);

  Scene& scene_;
  DialogHost& host_;
  QWidget* window_;
  std::string folder_;
  std::string file_;
};

}  // namespace ts5::artworker
