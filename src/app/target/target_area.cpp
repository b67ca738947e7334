#include "app/target/target_area.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

struct DeviceRow {
  PanelFlags flag;
  TextId name;
  TextId none;
  std::string_view icon;
};
constexpr std::array<DeviceRow, kDeviceKinds> kDevices{{
    {kPanelMidiDevices, texts::MidiDevicesName, texts::NoMidiDevices, "middevicon"},
    {kPanelAudioDevices, texts::AudioDevicesName, texts::NoAudioDevices, "wavdevicon"},
    {kPanelDiscDrives, texts::DrivesName, texts::NoDrives, "burnicon"},
    {kPanelPrinters, texts::PrintersName, texts::NoPrinters, "printericon"},
}};

constexpr int kListHeight = 92;

}  // namespace

TargetArea::TargetArea(QWidget* parent)
    : QWidget(parent),
      file_(new QRadioButton(QtText(texts::TargetFile), this)),
      screen_(new QRadioButton(QtText(texts::TargetScreen), this)),
      field_(new QLineEdit(this)),
      browse_(new QPushButton(QtText(texts::BrowseTarget), this)),
      protocolLine_(new QLabel(QtText(texts::ProtocolLineEmpty), this)),
      folderName_(new QLabel(this)),
      folder_(new QPushButton(QtText(texts::ChooseFolder), this)),
      clearFolder_(new QPushButton(QtText(texts::ClearFolder), this)),
      forecast_(new QLabel(this)),
      filePanel_(MakeFilePanel()),
      devicePanel_(new QStackedWidget(this)),
      run_(new QPushButton(QtText(texts::RunButtonRun), this)),
      stop_(new QPushButton(QtText(texts::StopButton), this)) {
  setObjectName("targetArea");
  setAccessibleName(QtText(texts::TargetAreaName));
  for (std::size_t i = 0; i < kDeviceKinds; ++i) {
    auto* list = new QListWidget(devicePanel_);
    list->setAccessibleName(QtText(kDevices[i].name));
    list->setToolTip(QtText(kDevices[i].name));
    list->setMaximumHeight(kListHeight);
    list->setMinimumHeight(44);
    list->setTabKeyNavigation(false);
    lists_[i] = list;
    connect(list, &QListWidget::currentRowChanged, this, &TargetArea::Edited);
    devicePanel_->addWidget(list);
    SetDevices(static_cast<DeviceKind>(i), {});
  }
  devicePanel_->setMaximumHeight(kListHeight);

  run_->setObjectName("runButton");
  run_->setIcon(Icon("run"));
  run_->setMinimumWidth(124);
  run_->setAutoDefault(false);
  run_->setToolTip(QtText(texts::HintRun));
  run_->setAccessibleDescription(QtText(texts::HintRun));
  stop_->setObjectName("stopButton");
  stop_->setIcon(Icon("stop"));
  stop_->setAutoDefault(false);
  stop_->setToolTip(QtText(texts::HintStop));
  stop_->setAccessibleDescription(QtText(texts::HintStop));
  connect(run_, &QPushButton::clicked, this, &TargetArea::RunClicked);
  connect(stop_, &QPushButton::clicked, this, &TargetArea::StopClicked);

  auto* title = new QLabel(QtText(texts::TargetAreaName), this);
  title->setProperty("role", "areaTitle");
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(run_);
  buttons->addWidget(stop_);
  buttons->addStretch(1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 4, 0, 0);
  layout->setSpacing(6);
  layout->addWidget(title);
  layout->addWidget(filePanel_);
  layout->addWidget(devicePanel_);
  layout->addLayout(buttons);

  QWidget* last = file_;
  for (QWidget* next :
       std::initializer_list<QWidget*>{field_, browse_, folder_, clearFolder_, screen_, lists_[0], lists_[1],
                                       lists_[2], lists_[3], run_, stop_}) {
    setTabOrder(last, next);
    last = next;
  }
}

QWidget* TargetArea::MakeFilePanel() {
  auto* panel = new QWidget(this);
  auto* grid = new QGridLayout(panel);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setVerticalSpacing(4);
  file_->setObjectName("targetFile");
  screen_->setObjectName("targetScreen");
  field_->setObjectName("targetField");
  field_->setAccessibleName(QtText(texts::TargetFieldName));
  field_->setToolTip(QtText(texts::TargetFieldName));
  browse_->setObjectName("targetBrowse");
  browse_->setIcon(Icon("browse"));
  browse_->setAutoDefault(false);
  browse_->setToolTip(QtText(texts::BrowseTargetTip));
  browse_->setAccessibleDescription(QtText(texts::BrowseTargetTip));
  protocolLine_->setObjectName("protocolLine");
  protocolLine_->setAccessibleName(QtText(texts::ProtocolLineName));
  protocolLine_->setTextFormat(Qt::PlainText);
  protocolLine_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  grid->addWidget(file_, 0, 0);
  grid->addWidget(field_, 0, 1);
  grid->addWidget(browse_, 0, 2);
  grid->addWidget(screen_, 1, 0);
  grid->addWidget(protocolLine_, 1, 1, 1, 2);
  grid->addWidget(MakeFolderRow(panel), 2, 0, 1, 3);
  grid->setColumnStretch(1, 1);
  file_->setChecked(true);
  connect(file_, &QRadioButton::clicked, this, [this] { emit ChoiceChanged(false); });
  connect(screen_, &QRadioButton::clicked, this, [this] { emit ChoiceChanged(true); });
  connect(file_, &QRadioButton::toggled, this, &TargetArea::UpdateField);
  connect(file_, &QRadioButton::toggled, this, &TargetArea::Edited);
  connect(field_, &QLineEdit::textChanged, this, &TargetArea::Edited);
  connect(browse_, &QPushButton::clicked, this, &TargetArea::BrowseClicked);
  return panel;
}

QWidget* TargetArea::MakeFolderRow(QWidget* panel) {
  folderRow_ = new QWidget(panel);
  auto* const row = new QHBoxLayout(folderRow_);
  row->setContentsMargins(0, 0, 0, 0);
  folderName_->setObjectName("targetFolder");
  folderName_->setTextFormat(Qt::PlainText);
  folder_->setObjectName("chooseTargetFolder");
  clearFolder_->setObjectName("clearTargetFolder");
  forecast_->setObjectName("targetForecast");
  const std::array tips{std::pair{folder_, texts::ChooseFolderTip},
                        std::pair{clearFolder_, texts::ClearFolderTip}};
  for (const auto& [button, tip] : tips) {
    button->setAutoDefault(false);
    button->setToolTip(QtText(tip));
    button->setAccessibleDescription(QtText(tip));
  }
  row->addWidget(folder_);
  row->addWidget(clearFolder_);
  row->addWidget(folderName_, 1);
  row->addWidget(forecast_);
  folderRow_->hide();
  connect(folder_, &QPushButton::clicked, this, &TargetArea::FolderClicked);
  connect(clearFolder_, &QPushButton::clicked, this, &TargetArea::FolderCleared);
  return folderRow_;
}

void TargetArea::ShowFolder(const std::optional<Folder>& folder) {
  folderRow_->setVisible(folder.has_value());
  if (!folder) return;
  folderName_->setText(folder->name);
  folderName_->setToolTip(folder->name);
  folderName_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  clearFolder_->setVisible(folder->own);
}

void TargetArea::SetDevices(DeviceKind kind, const QStringList& names) {
  const DeviceRow& row = kDevices.at(static_cast<std::size_t>(kind));
  QListWidget* list = DeviceList(kind);
  const QString chosen = list->currentItem() != nullptr ? list->currentItem()->text() : QString();
  list->clear();
  for (const QString& name : names) list->addItem(new QListWidgetItem(Icon(row.icon), name));
  if (names.isEmpty()) {
    auto* none = new QListWidgetItem(QtText(row.none), list);
    none->setFlags(Qt::ItemIsEnabled);
    none->setData(Qt::UserRole, true);
  } else {
    list->setCurrentRow(static_cast<int>(std::max<qsizetype>(names.indexOf(chosen), 0)));
  }
}

void TargetArea::ShowPanels(std::uint32_t panels) {
  const bool file = (panels & kPanelFile) != 0;
  const bool screen = (panels & kPanelScreen) != 0;
  filePanel_->setVisible(file);
  screen_->setVisible(screen);
  protocolLine_->setVisible(screen);
  if (!screen) file_->setChecked(true);
  bool device = false;
  for (std::size_t i = 0; i < kDeviceKinds; ++i) {
    if ((panels & kDevices[i].flag) == 0) continue;
    devicePanel_->setCurrentIndex(static_cast<int>(i));
    device = true;
  }
  devicePanel_->setVisible(device);
  SetProtocolLine({});
}

void TargetArea::SetProtocolLine(const QString& text) {
  const QString shown = text.isEmpty() ? QtText(texts::ProtocolLineEmpty) : text;
  protocolLine_->setText(shown);
  protocolLine_->setToolTip(text);
}

void TargetArea::SetPanel(const DestinationPanel& panel) {
  SetName(ToQt(panel.name));
  const bool screen = panel.screen && !screen_->isHidden();
  (screen ? screen_ : file_)->setChecked(true);
  const std::array rows{panel.midiDevice, panel.audioDevice, panel.drive, panel.printer};
  for (std::size_t i = 0; i < kDeviceKinds; ++i) {
    if (rows[i] >= 0 && rows[i] < lists_[i]->count()) lists_[i]->setCurrentRow(rows[i]);
  }
}

int TargetArea::SelectedDevice(DeviceKind kind) const {
  const QListWidget* list = DeviceList(kind);
  const QListWidgetItem* item = list->currentItem();
  return item == nullptr || item->data(Qt::UserRole).toBool() ? -1 : list->currentRow();
}

DestinationPanel TargetArea::Panel() const {
  DestinationPanel panel;
  panel.name = FromQt(field_->text());
  panel.screen = screen_->isChecked();
  panel.midiDevice = SelectedDevice(DeviceKind::Midi);
  panel.audioDevice = SelectedDevice(DeviceKind::Audio);
  panel.drive = SelectedDevice(DeviceKind::Drive);
  panel.printer = SelectedDevice(DeviceKind::Printer);
  return panel;
}

void TargetArea::SetName(const QString& name) {
  if (field_->text() != name) field_->setText(name);
}

void TargetArea::Enable(const Enabling& enabling) {
  enabling_ = enabling;
  file_->setEnabled(enabling.choice);
  screen_->setEnabled(enabling.choice);
  devicePanel_->setEnabled(enabling.devices);
  UpdateField();
  // The focus goes along with the button that can be pressed next.
  const bool hadFocus = run_->hasFocus() || stop_->hasFocus();
  run_->setEnabled(enabling.run);
  stop_->setEnabled(enabling.stop);
  if (hadFocus && !QWidget::hasFocus()) (enabling.run ? run_ : stop_)->setFocus();
}

void TargetArea::UpdateField() {
  const bool usable = enabling_.field && file_->isChecked();
  field_->setEnabled(usable);
  browse_->setEnabled(usable);
  folderRow_->setEnabled(enabling_.choice);
}

void TargetArea::SetRunTexts(const QString& run, const QString& stop) {
  run_->setText(run);
  stop_->setText(stop);
}

}  // namespace ts5
