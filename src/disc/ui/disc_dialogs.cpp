#include "disc/ui/disc_dialogs.h"

#include <QLabel>
#include <algorithm>
#include <utility>

#include "disc/pause_search.h"
#include "disc/recorder.h"
#include "disc/texts.h"
#include "disc/ui/drive_wait.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_DELETEDISK.h"
#include "ui_DISCINFO.h"
#include "ui_TRACKBREAK.h"
#include "ui_TRACKINFO.h"

namespace ts5::disc {
namespace {

void FillRows(QFormLayout& layout, const std::vector<PropertyRow>& rows) {
  while (layout.rowCount() > 0) layout.removeRow(0);
  for (const PropertyRow& row : rows) {
    auto* const value = new QLabel(ToQt(row.value));
    value->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    value->setAccessibleName(ToQt(row.label));
    layout.addRow(ToQt(row.label), value);
  }
}

void Tell(QWidget* parent, const std::string& text) {
  ShowWarning(parent, ToQt(text));
}

// The open drive and what is in it; nothing after saying why not.
std::optional<std::pair<CdDrive, DiscReport>> Read(const std::string& path, QWidget* parent) {
  auto drive = CdDrive::Open(path);
  if (!drive) {
    Tell(parent, std::string(Text(texts::RemarkDriveNotOpened)));
    return std::nullopt;
  }
  DiscReport report = WithDrive([&] { return ReadDiscReport(*drive, false); });
  if (!report.HasDisc()) {
    Tell(parent, Format(Text(texts::RemarkDiscUnknown), engine::kDiscUnknown));
    return std::nullopt;
  }
  return std::pair(*std::move(drive), std::move(report));
}

}  // namespace

void ShowDiscInformation(const std::string& drive, DialogHost& host, QWidget* parent) {
  const auto read = Read(drive, parent);
  if (!read) return;
  DiscInfoDialog(DiscRows(read->second), host, parent).exec();
}

void ShowTrackInformation(const std::string& drive, int track, DialogHost& host, QWidget* parent) {
  auto read = Read(drive, parent);
  if (!read) return;
  if (!TrackRows(read->first, read->second, track))
    return Tell(parent, std::string(Text(texts::TrackInfoFailed)));
  TrackInfoDialog(std::move(read->first), std::move(read->second), track, host, parent).exec();
}

DiscInfoDialog::DiscInfoDialog(const std::vector<PropertyRow>& rows, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::DiscInfoPrompt), parent), ui_(std::make_unique<Ui::DISCINFO>()) {
  ui_->setupUi(this);
  ConnectButtons();
  FillRows(*ui_->rows, rows);
}

DiscInfoDialog::~DiscInfoDialog() = default;

TrackInfoDialog::TrackInfoDialog(CdDrive drive, DiscReport report, int track, DialogHost& host,
                                 QWidget* parent)
    : HostedDialog(host, QtText(texts::TrackInfoPrompt), parent),
      drive_(std::move(drive)),
      report_(std::move(report)),
      track_(track),
      ui_(std::make_unique<Ui::TRACKINFO>()) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(ToQt(Format(Text(texts::TrackInfoCaption), track_)));
  ShowRows();
  connect(ui_->pauseButton, &QAbstractButton::clicked, this, [this] { SearchPause(); });
}

TrackInfoDialog::~TrackInfoDialog() = default;

void TrackInfoDialog::ShowRows() {
  if (const auto rows = TrackRows(drive_, report_, track_)) FillRows(*ui_->rows, *rows);
}

void TrackInfoDialog::SearchPause() {
  const auto track =
      std::ranges::find(report_.tracks, track_, [](const TrackReport& one) { return one.toc.number; });
  if (track == report_.tracks.end() || !report_.toc) return;
  ui_->pauseButton->setEnabled(false);
  track->pause = WithDrive([&] { return FindPause(drive_, *report_.toc, track_); });
  ui_->pauseButton->setEnabled(true);
  ShowRows();
}

EraseDialog::EraseDialog(std::string drive, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::ErasePrompt), parent),
      drive_(std::move(drive)),
      ui_(std::make_unique<Ui::DELETEDISK>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->quickRadio->setChecked(true);
}

EraseDialog::~EraseDialog() = default;

void EraseDialog::Commit() {
  if (state_ == State::Choosing) return Erase();
  if (state_ != State::Done) return;
  if (erased_ && ui_->ejectCheck->isChecked()) {
    if (auto drive = CdDrive::Open(drive_)) (void)drive->Eject();
  }
  accept();
}

void EraseDialog::reject() {
  if (state_ != State::Erasing) QDialog::reject();
}

void EraseDialog::Erase() {
  state_ = State::Erasing;
  const BlankType type = ui_->completeRadio->isChecked() ? BlankType::Complete : BlankType::Minimal;
  for (QWidget* control :
       std::initializer_list<QWidget*>{ui_->okButton, ui_->cancelButton, ui_->quickRadio, ui_->completeRadio})
    control->setEnabled(false);
  ui_->progressBar->setVisible(true);
  ui_->statusLabel->setText(QtText(texts::EraseWait));
  worker_ = std::jthread([this, type, path = drive_] {
    const EraseOutcome outcome = EraseDisc(path, type);
    QMetaObject::invokeMethod(
        this, [this, outcome] { ShowEnd(outcome); }, Qt::QueuedConnection);
  });
}

void EraseDialog::ShowEnd(EraseOutcome outcome) {
  state_ = State::Done;
  erased_ = outcome == EraseOutcome::Erased;
  ui_->progressBar->setVisible(false);
  ui_->statusLabel->setText(QtText(EraseText(outcome)));
  ui_->okButton->setText(QtText(texts::EraseClose));
  ui_->okButton->setEnabled(true);
}

TrackPauseDialog::TrackPauseDialog(std::uint32_t pause, PauseScope scope, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::PausePrompt), parent), ui_(std::make_unique<Ui::TRACKBREAK>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->pauseBox->setValue(static_cast<int>(pause));
  ui_->scope_0->setChecked(scope == PauseScope::One);
  ui_->scope_1->setChecked(scope == PauseScope::Selected);
  ui_->scope_2->setChecked(scope == PauseScope::All);
}

TrackPauseDialog::~TrackPauseDialog() = default;

std::uint32_t TrackPauseDialog::Pause() const {
  return static_cast<std::uint32_t>(ui_->pauseBox->value());
}

PauseScope TrackPauseDialog::Scope() const {
  if (ui_->scope_2->isChecked()) return PauseScope::All;
  return ui_->scope_1->isChecked() ? PauseScope::Selected : PauseScope::One;
}

}  // namespace ts5::disc
