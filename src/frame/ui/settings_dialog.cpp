#include "frame/ui/settings_dialog.h"

#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_EINSTELLUNGEN.h"
#include "ui_EIN_ALLGEMEIN.h"
#include "ui_EIN_CONVERT.h"

namespace ts5 {
namespace {

// The radio buttons of a setting, each with the value that it stands for.
template <typename Value>
struct Choice {
  QRadioButton* button;
  Value value;
};

template <typename Value, std::size_t N>
void Check(const std::array<Choice<Value>, N>& choices, Value value) {
  for (const auto& choice : choices) choice.button->setChecked(choice.value == value);
}

template <typename Value, std::size_t N>
Value Checked(const std::array<Choice<Value>, N>& choices) {
  for (const auto& choice : choices) {
    if (choice.button->isChecked()) return choice.value;
  }
  return choices.front().value;
}

std::array<Choice<JobSaving>, 3> JobChoices(const Ui::EIN_ALLGEMEIN& page) {
  return {{{page.jobSavingAutomatic, JobSaving::Automatic},
           {page.jobSavingNever, JobSaving::Never},
           {page.jobSavingAsk, JobSaving::Ask}}};
}

std::array<Choice<OldSearchResults>, 3> ResultChoices(const Ui::EIN_ALLGEMEIN& page) {
  return {{{page.searchResultsDelete, OldSearchResults::Delete},
           {page.searchResultsAppend, OldSearchResults::Extend},
           {page.searchResultsAsk, OldSearchResults::Ask}}};
}

std::array<Choice<SkinLayout>, 3> LayoutChoices(const Ui::EIN_ALLGEMEIN& page) {
  return {{{page.layoutTs5, SkinLayout::Stavora5},
           {page.layoutTs4, SkinLayout::Stavora4},
           {page.layoutWindows, SkinLayout::Windows}}};
}

std::array<Choice<std::int32_t>, 2> Id3Choices(const Ui::EIN_CONVERT& page) {
  return {{{page.id3Version3Radio, 3}, {page.id3Version4Radio, 4}}};
}

}  // namespace

SettingsDialog::SettingsDialog(const Settings& settings, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::SettingsStatus), parent),
      settings_(settings),
      ui_(std::make_unique<Ui::EINSTELLUNGEN>()),
      general_(std::make_unique<Ui::EIN_ALLGEMEIN>()),
      conversion_(std::make_unique<Ui::EIN_CONVERT>()),
      generalPage_(new QWidget),
      conversionPage_(new QWidget) {
  ui_->setupUi(this);
  ConnectButtons();
  general_->setupUi(generalPage_);
  conversion_->setupUi(conversionPage_);
  ui_->pages->addTab(generalPage_, generalPage_->windowTitle());
  ui_->pages->addTab(conversionPage_, conversionPage_->windowTitle());

  Show(FormOf(settings_));
  connect(conversion_->noPresetCheck, &QAbstractButton::toggled, this, [this] { UpdateEnabling(); });
  connect(conversion_->targetDirectoryRadio, &QAbstractButton::toggled, this, [this] { UpdateEnabling(); });
  connect(conversion_->suffixCheck, &QAbstractButton::toggled, this, [this] { UpdateEnabling(); });
  const auto browse = [this](QAbstractButton* button, QLineEdit* field) {
    connect(button, &QAbstractButton::clicked, this,
            [this, button, field] { Browse(field, button->toolTip()); });
  };
  browse(general_->artworkerDirectoryButton, general_->artworkerDirectoryEdit);
  browse(general_->parameterSetDirectoryButton, general_->parameterSetDirectoryEdit);
  browse(conversion_->targetDirectoryButton, conversion_->targetDirectoryEdit);
}

SettingsDialog::~SettingsDialog() = default;

QString SettingsDialog::HelpTopic() const {
  return QtText(ui_->pages->currentWidget() == generalPage_ ? texts::SettingsHelpGeneral
                                                            : texts::SettingsHelpConversion);
}

void SettingsDialog::Show(const SettingsForm& form) {
  Check(JobChoices(*general_), form.jobSaving);
  general_->askBeforeEndCheck->setChecked(form.askBeforeEnd);
  Check(ResultChoices(*general_), form.oldSearchResults);
  Check(LayoutChoices(*general_), form.skinLayout);
  general_->wholePathCheck->setChecked(form.searchWholePath);
  general_->artworkerDirectoryEdit->setText(ToQt(form.artworkerLayoutDirectory));
  general_->parameterSetDirectoryEdit->setText(ToQt(form.playbackParameterDirectory));
  conversion_->noPresetCheck->setChecked(form.noTargetDefault);
  conversion_->sourceDirectoryRadio->setChecked(form.sourceDirectoryAsTarget);
  conversion_->targetDirectoryRadio->setChecked(!form.sourceDirectoryAsTarget);
  conversion_->targetDirectoryEdit->setText(ToQt(form.targetDirectory));
  conversion_->suffixCheck->setChecked(form.useSuffix);
  conversion_->suffixEdit->setText(ToQt(form.suffix));
  conversion_->overwriteCheck->setChecked(form.overwriteTarget);
  Check(Id3Choices(*conversion_), form.id3Version);
  UpdateEnabling();
}

SettingsForm SettingsDialog::Form() const {
  return {.jobSaving = Checked(JobChoices(*general_)),
          .askBeforeEnd = general_->askBeforeEndCheck->isChecked(),
          .oldSearchResults = Checked(ResultChoices(*general_)),
          .searchWholePath = general_->wholePathCheck->isChecked(),
          .skinLayout = Checked(LayoutChoices(*general_)),
          .artworkerLayoutDirectory = FromQt(general_->artworkerDirectoryEdit->text()),
          .playbackParameterDirectory = FromQt(general_->parameterSetDirectoryEdit->text()),
          .noTargetDefault = conversion_->noPresetCheck->isChecked(),
          .sourceDirectoryAsTarget = conversion_->sourceDirectoryRadio->isChecked(),
          .targetDirectory = FromQt(conversion_->targetDirectoryEdit->text()),
          .useSuffix = conversion_->suffixCheck->isChecked(),
          .suffix = FromQt(conversion_->suffixEdit->text()),
          .overwriteTarget = conversion_->overwriteCheck->isChecked(),
          .id3Version = Checked(Id3Choices(*conversion_))};
}

void SettingsDialog::UpdateEnabling() {
  const ConversionPageEnabling enabling = EnablingOf(Form());
  conversion_->sourceDirectoryRadio->setEnabled(enabling.directoryChoice);
  conversion_->targetDirectoryRadio->setEnabled(enabling.directoryChoice);
  conversion_->targetDirectoryEdit->setEnabled(enabling.directory);
  conversion_->targetDirectoryButton->setEnabled(enabling.directory);
  conversion_->suffixCheck->setEnabled(enabling.suffixChoice);
  conversion_->suffixEdit->setEnabled(enabling.suffix);
}

void SettingsDialog::Browse(QLineEdit* field, const QString& title) {
  if (const auto directory = AskDirectory(title, settings_.lastSelectedFolder, this))
    field->setText(ToQt(*directory));
}

QLineEdit* SettingsDialog::FieldOf(SettingsField field) const {
  switch (field) {
    case SettingsField::ArtworkerLayoutDirectory:
      return general_->artworkerDirectoryEdit;
    case SettingsField::PlaybackParameterDirectory:
      return general_->parameterSetDirectoryEdit;
    case SettingsField::TargetDirectory:
      return conversion_->targetDirectoryEdit;
    case SettingsField::Suffix:
      return conversion_->suffixEdit;
    case SettingsField::None:
      break;
  }
  return nullptr;
}

void SettingsDialog::Commit() {
  const SettingsCheck check = ValidateSettings(settings_, Form());
  if (check.Accepted()) {
    settings_ = check.settings;
    accept();
    return;
  }
  // The field that is wrong may stand on the page behind.
  QLineEdit* field = FieldOf(check.field);
  if (field != nullptr)
    ui_->pages->setCurrentWidget(generalPage_->isAncestorOf(field) ? generalPage_ : conversionPage_);
  ShowNotice(this, *check.message);
  if (field != nullptr) FocusText(field);
}

}  // namespace ts5
