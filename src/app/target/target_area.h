// The destination and device panels of the main window with the run and stop buttons. Which panels stand
// there follows from the panel flags of the current filter. The area shows what it is given and reports what
// the user does.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QToolButton>
#include <QWidget>
#include <array>
#include <cstdint>
#include <optional>

#include "frame/filter_catalogue.h"
#include "frame/jobs.h"

namespace ts5 {

// The lists of devices, in the order of their panel flags.
enum class DeviceKind : std::uint8_t { Midi, Audio, Drive, Printer };
inline constexpr std::size_t kDeviceKinds = 4;

class TargetArea : public QWidget {
  Q_OBJECT

 public:
  explicit TargetArea(QWidget* parent = nullptr);

  // A list without devices shows the text that says so.
  void SetDevices(DeviceKind kind, const QStringList& names);
  // Lays the panels out for a filter.
  void ShowPanels(std::uint32_t panels);
  void SetPanel(const DestinationPanel& panel);
  [[nodiscard]] DestinationPanel Panel() const;
  void SetName(const QString& name);

  struct Enabling {
    bool field = true;   // destination field and browse button
    bool choice = true;  // file or screen
    bool devices = true;
    bool run = true;
    bool stop = false;
  };
  void Enable(const Enabling& enabling);
  // Where the files of several sources go; nothing when there is nothing to choose. own: the job's own
  // directory.
  struct Folder {
    QString name;
    bool own = false;
  };
  void ShowFolder(const std::optional<Folder>& folder);
  // What would happen to the files there.
  void SetForecast(const QString& text) { forecast_->setText(text); }
  void SetRunTexts(const QString& run, const QString& stop);
  void SetProtocolLine(const QString& text);

  [[nodiscard]] QLineEdit* Field() const { return field_; }
  [[nodiscard]] QPushButton* FolderButton() const { return folder_; }
  [[nodiscard]] QPushButton* BrowseButton() const { return browse_; }
  [[nodiscard]] QRadioButton* FileChoice() const { return file_; }
  [[nodiscard]] QRadioButton* ScreenChoice() const { return screen_; }
  [[nodiscard]] QPushButton* RunButton() const { return run_; }
  [[nodiscard]] QPushButton* StopButton() const { return stop_; }
  [[nodiscard]] QListWidget* DeviceList(DeviceKind kind) const {
    return lists_.at(static_cast<std::size_t>(kind));
  }

 signals:
  void Edited();  // the panel, by whomever
  void BrowseClicked();
  void FolderClicked();
  void FolderCleared();  // as the settings say again
  void RunClicked();
  void StopClicked();
  void ChoiceChanged(bool screen);

 private:
  [[nodiscard]] QWidget* MakeFilePanel();
  [[nodiscard]] QWidget* MakeFolderRow(QWidget* panel);
  [[nodiscard]] int SelectedDevice(DeviceKind kind) const;
  void UpdateField();

  QRadioButton* file_;
  QRadioButton* screen_;
  QLineEdit* field_;
  QPushButton* browse_;
  QLabel* protocolLine_;
  QLabel* folderName_;
  QPushButton* folder_;
  QPushButton* clearFolder_;
  QLabel* forecast_;
  QWidget* folderRow_ = nullptr;
  QWidget* filePanel_;
  QStackedWidget* devicePanel_;
  std::array<QListWidget*, kDeviceKinds> lists_{};
  QPushButton* run_;
  QPushButton* stop_;
  Enabling enabling_;
};

}  // namespace ts5
