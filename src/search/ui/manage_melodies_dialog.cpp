#include "search/ui/manage_melodies_dialog.h"

#include <QHeaderView>
#include <utility>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "search/texts.h"
#include "search/ui/melody_list_model.h"
#include "ui_MANAGEMELODIES.h"

namespace ts5 {

ManageMelodiesDialog::ManageMelodiesDialog(MelodyStore& store, SearchMelody current, MelodySound& sound,
                                           const MelodyVoice& voice, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::ManageMelodiesPrompt), parent),
      store_(store),
      melody_(std::move(current)),
      sound_(sound),
      voice_(voice),
      model_(std::make_unique<MelodyListModel>()),
      ui_(std::make_unique<Ui::MANAGEMELODIES>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->melodyList->setModel(model_.get());
  ui_->melodyList->header()->setStretchLastSection(false);
  ui_->melodyList->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  ui_->melodyList->sortByColumn(0, Qt::AscendingOrder);
  connect(ui_->closeButton, &QPushButton::clicked, this, &QDialog::accept);
  connect(ui_->renameButton, &QPushButton::clicked, this,
          [this] { ui_->melodyList->edit(ui_->melodyList->currentIndex().siblingAtColumn(0)); });
  connect(ui_->deleteButton, &QPushButton::clicked, this, &ManageMelodiesDialog::Delete);
  connect(ui_->loadButton, &QPushButton::clicked, this, &ManageMelodiesDialog::Load);
  connect(ui_->melodyList, &QTreeView::doubleClicked, this, &ManageMelodiesDialog::Load);
  connect(ui_->playButton, &QPushButton::clicked, this, &ManageMelodiesDialog::TogglePlaying);
  connect(ui_->melodyList->selectionModel(), &QItemSelectionModel::currentChanged, this,
          &ManageMelodiesDialog::ShowState);
  connect(&sound_, &MelodySound::PlayingChanged, this, &ManageMelodiesDialog::ShowState);
  // The list is filled anew behind a rename, which must not happen while its editor is still closing.
  connect(model_.get(), &MelodyListModel::NameEdited, this, &ManageMelodiesDialog::Rename,
          Qt::QueuedConnection);
  Refill(melody_.name);
}

ManageMelodiesDialog::~ManageMelodiesDialog() = default;

std::string ManageMelodiesDialog::Selected() const {
  return model_->NameAt(ui_->melodyList->currentIndex().row());
}

void ManageMelodiesDialog::Refill(const std::string& select) {
  model_->Fill(store_.ListStoredMelodies().value_or(std::vector<StoredMelodyInfo>{}));
  const int row = std::max(model_->RowOf(select), 0);
  ui_->melodyList->setCurrentIndex(model_->index(row, 0));
  ShowState();
}

void ManageMelodiesDialog::ShowState() {
  const bool any = !Selected().empty();
  ui_->renameButton->setEnabled(any);
  ui_->deleteButton->setEnabled(any);
  ui_->loadButton->setEnabled(any);
  ui_->playButton->setEnabled(sound_.Playing() || (any && sound_.Available()));
  ui_->playButton->setText(QtText(sound_.Playing() ? texts::ManageStop : texts::ManagePlay));
}

void ManageMelodiesDialog::Rename(const std::string& from, const std::string& to) {
  const MelodyAction action = RenameStoredMelody(
      store_, from, to, [this](TextId question) { return AskYesNo(this, question, DefaultButton::No); });
  if (action.message) ShowWarning(this, *action.message);
  Refill(action.done ? to : from);
}

void ManageMelodiesDialog::Delete() {
  const std::string name = Selected();
  if (name.empty()) return;
  const MelodyAction action =
      DeleteStoredMelody(store_, name, [this](TextId question) { return AskYesNo(this, question); });
  if (action.message) ShowWarning(this, *action.message);
  if (action.done) Refill({});
}

void ManageMelodiesDialog::Load() {
  const std::string name = Selected();
  if (name.empty()) return;
  const MelodyAction action =
      LoadStoredMelody(store_, name, melody_, [this](TextId question) { return AskYesNo(this, question); });
  if (action.message) ShowWarning(this, *action.message);
  loaded_ = loaded_ || action.done;
}

void ManageMelodiesDialog::TogglePlaying() {
  if (sound_.Playing()) {
    sound_.Stop();
    return;
  }
  const auto elements = store_.LoadMelody(Selected());
  if (!elements || !sound_.Start(*elements, voice_)) ShowWarning(this, texts::StoredMelodyNotPlayed);
}

QString ManageMelodiesDialog::HelpTopic() const {
  return QStringLiteral("parm_melodiesuche-verwaltung.htm");
}

}  // namespace ts5
