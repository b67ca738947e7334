#include "audio/interfaces/ui/interface_editor.h"

#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "audio/interfaces/ui/set_controls.h"
#include "audio/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_CREATEMP3INTERFACE_5.h"
#include "ui_EDITINTERFACE.h"

namespace ts5::interfaces {

// The parameters of a set and what describes them.
class SetPage : public QWidget {
 public:
  explicit SetPage(const ParameterSet& set) : parameters_(new QLineEdit(ToQt(set.parameters))) {
    auto* const layout = new QVBoxLayout(this);
    auto* const label = new QLabel(QtText(texts::EditorParameters));
    label->setBuddy(parameters_);
    parameters_->setObjectName(QStringLiteral("parametersEdit"));
    parameters_->setMaxLength(static_cast<int>(kMostParameterString));
    layout->addWidget(label);
    layout->addWidget(parameters_);
    auto* const properties = new QWidget;
    controls_.setupUi(properties);
    controls_.text->hide();
    ShowSet(controls_, set);
    layout->addWidget(properties);
  }

  [[nodiscard]] ParameterSet Set() const {
    ParameterSet set;
    const std::string text = FromQt(parameters_->text());
    set.parameters = Trim(text);
    TakeSet(controls_, set);
    return set;
  }
  [[nodiscard]] QLineEdit* Field() const { return parameters_; }

 private:
  QLineEdit* parameters_;
  Ui::CREATEMP3INTERFACE_5 controls_;
};

namespace {

constexpr int kFirstSet = 1;  // the page of the names comes first

}  // namespace

InterfaceEditor::InterfaceEditor(const EncoderInterface& interface, DialogHost& host, QWidget* parent)
    : HostedDialog(host, {}, parent), interface_(interface), ui_(std::make_unique<Ui::EDITINTERFACE>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->encoderEdit->setText(ToQt(interface.encoder));
  ui_->nameEdit->setText(ToQt(interface.name));
  ui_->extensionEdit->setText(ToQt(interface.extension));
  for (const ParameterSet& set : interface.sets) AddSet(set);
  connect(ui_->encoderEdit, &QLineEdit::textChanged, this, &InterfaceEditor::Refresh);
  connect(ui_->pages, &QTabWidget::currentChanged, this, &InterfaceEditor::Refresh);
  connect(ui_->newSetButton, &QPushButton::clicked, this, [this] {
    AddSet(NewSet());
    ui_->pages->setCurrentIndex(ui_->pages->count() - 1);
    CurrentSet()->Field()->setFocus();
  });
  connect(ui_->deleteSetButton, &QPushButton::clicked, this, &InterfaceEditor::DeleteSet);
  connect(ui_->infoButton, &QPushButton::clicked, this, &InterfaceEditor::ShowInfo);
  connect(ui_->encoderButton, &QPushButton::clicked, this,
          [this] { AskEncoder(*ui_->encoderEdit, HelpTopic(), Host(), this); });
  Refresh();
}

InterfaceEditor::~InterfaceEditor() = default;

QString InterfaceEditor::HelpTopic() const {
  return QStringLiteral("Befehle-Aktion-MP3Interfaceverwalten.htm");
}

SetPage* InterfaceEditor::CurrentSet() const {
  return dynamic_cast<SetPage*>(ui_->pages->currentWidget());
}

void InterfaceEditor::AddSet(const ParameterSet& set) {
  ui_->pages->addTab(new SetPage(set), QString());
  Number();
}

void InterfaceEditor::DeleteSet() {
  SetPage* const page = CurrentSet();
  if (page == nullptr || !AskYesNo(this, texts::EditorAskDeleteSet, DefaultButton::No)) return;
  ui_->pages->removeTab(ui_->pages->currentIndex());
  page->deleteLater();
  Number();
  Refresh();
}

void InterfaceEditor::Number() {
  for (int tab = kFirstSet; tab < ui_->pages->count(); ++tab)
    ui_->pages->setTabText(tab, ToQt(Format(Text(texts::EditorSet), tab)));
}

void InterfaceEditor::Refresh() {
  const bool isSet = CurrentSet() != nullptr;
  ui_->deleteSetButton->setEnabled(isSet);
  ui_->infoButton->setEnabled(isSet);
  ui_->missingLabel->setVisible(EncoderFault(Trimmed(*ui_->encoderEdit)).has_value());
}

EncoderInterface InterfaceEditor::FromControls() const {
  EncoderInterface edited{
      Trimmed(*ui_->encoderEdit), Trimmed(*ui_->nameEdit), Trimmed(*ui_->extensionEdit), {}};
  for (int tab = kFirstSet; tab < ui_->pages->count(); ++tab)
    edited.sets.push_back(static_cast<const SetPage*>(ui_->pages->widget(tab))->Set());
  return edited;
}

void InterfaceEditor::ShowInfo() {
  const int tab = ui_->pages->currentIndex();
  if (tab < kFirstSet) return;
  ShowNotice(this, ToQt(DescribeSet(FromControls(), static_cast<std::size_t>(tab - kFirstSet))));
}

// Says what is wrong and shows its field; an encoder that is missing is only asked about.
bool InterfaceEditor::Check(const EncoderInterface& edited) {
  const auto fails = [this](std::optional<TextId> fault, int tab, QLineEdit* field) {
    if (!fault) return false;
    ui_->pages->setCurrentIndex(tab);
    ShowWarning(this, *fault);
    FocusText(field);
    return true;
  };
  if (edited.encoder.empty() && fails(EncoderFault(edited.encoder), 0, ui_->encoderEdit)) return false;
  if (fails(InterfaceNameFault(edited.name), 0, ui_->nameEdit)) return false;
  if (fails(ExtensionFault(edited.extension), 0, ui_->extensionEdit)) return false;
  for (std::size_t i = 0; i < edited.sets.size(); ++i) {
    const int tab = static_cast<int>(i) + kFirstSet;
    auto* const field = static_cast<const SetPage*>(ui_->pages->widget(tab))->Field();
    if (fails(ParametersFault(edited.sets[i].parameters), tab, field)) return false;
  }
  return edited.Available() || AskYesNo(this, texts::EditorAskClose, DefaultButton::No);
}

void InterfaceEditor::Commit() {
  EncoderInterface edited = FromControls();
  if (!Check(edited)) return;
  interface_ = std::move(edited);
  accept();
}

}  // namespace ts5::interfaces
