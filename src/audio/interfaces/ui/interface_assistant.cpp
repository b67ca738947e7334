#include "audio/interfaces/ui/interface_assistant.h"

#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>
#include <utility>

#include "audio/interfaces/ui/set_controls.h"
#include "audio/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_CREATEMP3INTERFACE.h"
#include "ui_CREATEMP3INTERFACE_1.h"
#include "ui_CREATEMP3INTERFACE_2.h"
#include "ui_CREATEMP3INTERFACE_3.h"
#include "ui_CREATEMP3INTERFACE_4.h"
#include "ui_CREATEMP3INTERFACE_5.h"

namespace ts5::interfaces {
namespace {

template <typename Form>
std::unique_ptr<Form> AddPage(QStackedWidget& pages) {
  auto* const page = new QWidget;
  auto form = std::make_unique<Form>();
  form->setupUi(page);
  pages.addWidget(page);
  return form;
}

QVBoxLayout* AddTextPage(QStackedWidget& pages, TextId text) {
  auto* const page = new QWidget;
  auto* const layout = new QVBoxLayout(page);
  auto* const label = new QLabel(QtText(text));
  label->setWordWrap(true);
  layout->addWidget(label);
  pages.addWidget(page);
  return layout;
}

}  // namespace

InterfaceAssistant::InterfaceAssistant(EncoderInterfaces found, std::string file, DialogHost& host,
                                       QWidget* parent)
    : HostedDialog(host, QtText(texts::AssistantPrompt), parent),
      found_(std::move(found)),
      file_(std::move(file)),
      set_(NewSet()),
      ui_(std::make_unique<Ui::CREATEMP3INTERFACE>()) {
  ui_->setupUi(this);
  ConnectButtons();
  BuildPages();
  connect(ui_->backButton, &QPushButton::clicked, this, &InterfaceAssistant::GoBack);
  ShowPage(Welcome);
}

InterfaceAssistant::~InterfaceAssistant() = default;

QString InterfaceAssistant::HelpTopic() const {
  return QStringLiteral("Befehle-Aktion-MP3Interfaceerstellen.htm");
}

void InterfaceAssistant::BuildPages() {
  QStackedWidget& pages = *ui_->pages;
  welcome_ = AddPage<Ui::CREATEMP3INTERFACE_1>(pages);
  welcome_->foundList->addItem(QtText(texts::AssistantOther));
  for (const EncoderInterface& one : found_)
    welcome_->foundList->addItem(ToQt(one.name + "  -  " + one.encoder));
  welcome_->foundList->setCurrentRow(0);
  welcome_->foundList->setVisible(!found_.empty());
  welcome_->foundLabel->setVisible(!found_.empty());

  encoder_ = AddPage<Ui::CREATEMP3INTERFACE_2>(pages);
  connect(encoder_->encoderButton, &QPushButton::clicked, this,
          [this] { AskEncoder(*encoder_->encoderEdit, HelpTopic(), Host(), this); });
  names_ = AddPage<Ui::CREATEMP3INTERFACE_3>(pages);

  QVBoxLayout& sets = *AddTextPage(pages, texts::AssistantSets);
  setList_ = new QListWidget;
  setList_->setObjectName(QStringLiteral("setList"));
  setList_->setAccessibleName(QtText(texts::AssistantSetList));
  another_ = new QCheckBox(QtText(texts::AssistantAnother));
  another_->setObjectName(QStringLiteral("anotherCheck"));
  sets.addWidget(setList_);
  sets.addWidget(another_);
  connect(another_, &QCheckBox::toggled, this, [this] { ShowPage(Sets); });

  parameters_ = AddPage<Ui::CREATEMP3INTERFACE_4>(pages);
  properties_ = AddPage<Ui::CREATEMP3INTERFACE_5>(pages);
  AddTextPage(pages, texts::AssistantDone)->addStretch();
}

void InterfaceAssistant::Commit() {
  const auto page = static_cast<Page>(ui_->pages->currentIndex());
  if (page == Done) return accept();
  if (TakePage(page)) ShowPage(PageAfter(page));
}

// What is known of the encoder that was chosen fills the pages behind, each time that it is another.
void InterfaceAssistant::TakeFound() {
  const int row = welcome_->foundList->currentRow();
  if (row == taken_) return;
  taken_ = row;
  interface_ = row < 1 ? EncoderInterface() : found_.at(static_cast<std::size_t>(row - 1));
  encoder_->encoderEdit->setText(ToQt(interface_.encoder));
  names_->nameEdit->setText(ToQt(interface_.name));
  names_->extensionEdit->setText(ToQt(interface_.extension));
}

bool InterfaceAssistant::TakePage(Page page) {
  const auto fails = [this](std::optional<TextId> fault, QLineEdit* field) {
    if (!fault) return false;
    ShowWarning(this, *fault);
    FocusText(field);
    return true;
  };
  switch (page) {
    case Welcome:
      TakeFound();
      return true;
    case Encoder:
      interface_.encoder = Trimmed(*encoder_->encoderEdit);
      return !fails(EncoderFault(interface_.encoder), encoder_->encoderEdit);
    case Names:
      interface_.name = Trimmed(*names_->nameEdit);
      interface_.extension = Trimmed(*names_->extensionEdit);
      return !fails(InterfaceNameFault(interface_.name), names_->nameEdit) &&
             !fails(ExtensionFault(interface_.extension), names_->extensionEdit);
    case Sets:
      return another_->isChecked() || Save();
    case Parameters:
      set_.parameters = Trimmed(*parameters_->parametersEdit);
      return !fails(ParametersFault(set_.parameters), parameters_->parametersEdit);
    case Properties:
      TakeSet(*properties_, set_);
      interface_.sets.push_back(std::exchange(set_, NewSet()));
      parameters_->parametersEdit->clear();
      return true;
    case Done:
      break;
  }
  return true;
}

InterfaceAssistant::Page InterfaceAssistant::PageAfter(Page page) const {
  if (page == Sets) return another_->isChecked() ? Parameters : Done;
  if (page == Properties) return Sets;
  return static_cast<Page>(page + 1);
}

void InterfaceAssistant::GoBack() {
  const auto page = static_cast<Page>(ui_->pages->currentIndex());
  ShowPage(static_cast<Page>(page - 1));
}

void InterfaceAssistant::ShowPage(Page page) {
  const bool arrives = ui_->pages->currentIndex() != page;
  if (page == Sets && arrives) {
    setList_->clear();
    for (const ParameterSet& set : interface_.sets) setList_->addItem(ToQt(set.parameters));
    another_->setEnabled(!interface_.sets.empty());
    another_->setChecked(interface_.sets.empty());
  }
  if (page == Properties) ShowSet(*properties_, set_);
  ui_->pages->setCurrentIndex(page);
  ui_->backButton->setEnabled(page != Welcome && page != Done);
  ui_->cancelButton->setVisible(page != Done);
  const bool finishes = page == Sets && !another_->isChecked();
  const TextId next = page == Done ? texts::AssistantClose
                      : finishes   ? texts::AssistantFinish
                                   : texts::AssistantNext;
  ui_->okButton->setText(QtText(next));
  if (page == Encoder) FocusText(encoder_->encoderEdit);
  if (page == Names) FocusText(names_->nameEdit);
  if (page == Parameters) FocusText(parameters_->parametersEdit);
}

bool InterfaceAssistant::Save() {
  EncoderInterfaces all = LoadInterfaces(file_);
  all.push_back(interface_);
  if (Succeeded(SaveInterfaces(file_, all))) return true;
  ShowWarning(this, texts::InterfacesNotSaved);
  return false;
}

}  // namespace ts5::interfaces
