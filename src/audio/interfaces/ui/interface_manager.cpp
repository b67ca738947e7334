#include "audio/interfaces/ui/interface_manager.h"

#include <QTreeWidget>
#include <algorithm>
#include <utility>

#include "audio/interfaces/ui/interface_editor.h"
#include "audio/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_MODIFYMP3INTERFACES.h"

namespace ts5::interfaces {

InterfaceManager::InterfaceManager(std::string file, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::ManagerPrompt), parent),
      file_(std::move(file)),
      interfaces_(LoadInterfaces(file_)),
      ui_(std::make_unique<Ui::MODIFYMP3INTERFACES>()) {
  ui_->setupUi(this);
  ConnectButtons();
  connect(ui_->editButton, &QPushButton::clicked, this, &InterfaceManager::Edit);
  connect(ui_->deleteButton, &QPushButton::clicked, this, &InterfaceManager::Delete);
  connect(ui_->interfaceList, &QTreeWidget::itemActivated, this, [this] { Edit(); });
  Show(0);
}

InterfaceManager::~InterfaceManager() = default;

QString InterfaceManager::HelpTopic() const {
  return QStringLiteral("Befehle-Aktion-MP3Interfaceverwalten.htm");
}

std::size_t InterfaceManager::Current() const {
  const int row = ui_->interfaceList->indexOfTopLevelItem(ui_->interfaceList->currentItem());
  return row < 0 ? interfaces_.size() : std::min(static_cast<std::size_t>(row), interfaces_.size());
}

void InterfaceManager::Show(std::size_t current) {
  QTreeWidget& list = *ui_->interfaceList;
  list.clear();
  for (const EncoderInterface& interface : interfaces_) {
    const TextId state = interface.Available() ? texts::ManagerAvailable : texts::ManagerNotAvailable;
    auto* const item = new QTreeWidgetItem(&list, {ToQt(interface.name), QtText(state)});
    item->setToolTip(0, ToQt(interface.encoder).toHtmlEscaped());
  }
  if (interfaces_.empty()) new QTreeWidgetItem(&list, {QtText(texts::ManagerNone)});
  list.setCurrentItem(list.topLevelItem(
      static_cast<int>(std::min(current, std::max<std::size_t>(interfaces_.size(), 1) - 1))));
  list.resizeColumnToContents(0);
  ui_->editButton->setEnabled(!interfaces_.empty());
  ui_->deleteButton->setEnabled(!interfaces_.empty());
}

void InterfaceManager::Edit() {
  const std::size_t current = Current();
  if (current == interfaces_.size()) return;
  InterfaceEditor editor(interfaces_[current], Host(), this);
  if (editor.exec() != Accepted) return;
  EncoderInterfaces changed = interfaces_;
  changed[current] = editor.Edited();
  if (Save(std::move(changed))) Show(current);
}

void InterfaceManager::Delete() {
  const std::size_t current = Current();
  if (current == interfaces_.size() || !AskYesNo(this, texts::ManagerAskDelete, DefaultButton::No)) return;
  EncoderInterfaces changed = interfaces_;
  changed.erase(changed.begin() + static_cast<std::ptrdiff_t>(current));
  if (Save(std::move(changed))) Show(current);
}

bool InterfaceManager::Save(EncoderInterfaces changed) {
  if (Failed(SaveInterfaces(file_, changed))) {
    ShowWarning(this, texts::InterfacesNotSaved);
    return false;
  }
  interfaces_ = std::move(changed);
  return true;
}

}  // namespace ts5::interfaces
