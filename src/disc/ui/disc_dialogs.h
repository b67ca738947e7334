// DISCINFO, TRACKINFO, DELETEDISK and TRACKBREAK: what is on a disc, erasing it, and the pause before a
// track.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "disc/disc_info.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class DELETEDISK;
class DISCINFO;
class TRACKBREAK;
class TRACKINFO;
}  // namespace Ui

namespace ts5::disc {

// drive: its path. They read once, when they are opened; why they cannot is told instead of a dialog.
void ShowDiscInformation(const std::string& drive, DialogHost& host, QWidget* parent);
void ShowTrackInformation(const std::string& drive, int track, DialogHost& host, QWidget* parent);

class DiscInfoDialog : public HostedDialog {
  Q_OBJECT

 public:
  DiscInfoDialog(const std::vector<PropertyRow>& rows, DialogHost& host, QWidget* parent);
  ~DiscInfoDialog() override;
  [[nodiscard]] QString HelpTopic() const override { return QStringLiteral("laufwerke.htm"); }

 private:
  std::unique_ptr<Ui::DISCINFO> ui_;
};

class TrackInfoDialog : public HostedDialog {
  Q_OBJECT

 public:
  TrackInfoDialog(CdDrive drive, DiscReport report, int track, DialogHost& host, QWidget* parent);
  ~TrackInfoDialog() override;
  [[nodiscard]] QString HelpTopic() const override { return QStringLiteral("laufwerke.htm"); }

 private:
  void ShowRows();
  void SearchPause();

  CdDrive drive_;
  DiscReport report_;
  int track_;
  std::unique_ptr<Ui::TRACKINFO> ui_;
};

class EraseDialog : public HostedDialog {
  Q_OBJECT

 public:
  EraseDialog(std::string drive, DialogHost& host, QWidget* parent);
  ~EraseDialog() override;
  [[nodiscard]] QString HelpTopic() const override { return QStringLiteral("Befehle-Aktion-DeleteDisc.htm"); }

 protected:
  void Commit() override;
  void reject() override;  // not while the disc is being erased

 private:
  void Erase();
  void ShowEnd(EraseOutcome outcome);

  enum class State { Choosing, Erasing, Done };
  std::string drive_;
  State state_ = State::Choosing;
  bool erased_ = false;
  std::jthread worker_;
  std::unique_ptr<Ui::DELETEDISK> ui_;
};

// To which entries a pause applies, as it is stored.
enum class PauseScope { One = 0, Selected = 1, All = 2 };

class TrackPauseDialog : public HostedDialog {
  Q_OBJECT

 public:
  TrackPauseDialog(std::uint32_t pause, PauseScope scope, DialogHost& host, QWidget* parent);
  ~TrackPauseDialog() override;
  [[nodiscard]] QString HelpTopic() const override { return QStringLiteral("freiedateiliste.htm"); }

  [[nodiscard]] std::uint32_t Pause() const;  // seconds
  [[nodiscard]] PauseScope Scope() const;

 private:
  std::unique_ptr<Ui::TRACKBREAK> ui_;
};

}  // namespace ts5::disc
