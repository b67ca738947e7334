#include "score/ui/sound_page.h"

#include <QHeaderView>
#include <QMenu>
#include <QSignalBlocker>

#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "score/texts.h"
#include "score/ui/sound_menu.h"
#include "ui_PLAYBACK5.h"

namespace ts5 {
namespace {

constexpr int kStaffRole = Qt::UserRole;
constexpr int kVoiceRole = Qt::UserRole + 1;
enum Column { kStaff, kVoice, kChannel, kSound };

}  // namespace

SoundPage::SoundPage(QWidget* parent) : QWidget(parent), ui_(std::make_unique<Ui::PLAYBACK5>()) {
  ui_->setupUi(this);
  QHeaderView& header = *ui_->soundList->header();
  header.setSectionResizeMode(kStaff, QHeaderView::Stretch);
  header.setStretchLastSection(false);
  for (const int column : {kVoice, kChannel, kSound})
    header.setSectionResizeMode(column, QHeaderView::ResizeToContents);
  ui_->soundList->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(ui_->soundList, &QTreeWidget::currentItemChanged, this, [this] { UpdateControls(); });
  connect(ui_->soundList, &QWidget::customContextMenuRequested, this,
          [this](QPoint at) { ChooseSoundAt(ui_->soundList->viewport()->mapToGlobal(at)); });
  connect(ui_->soundList, &QTreeWidget::itemActivated, this, [this](const QTreeWidgetItem* item) {
    const QRect row = ui_->soundList->visualItemRect(item);
    ChooseSoundAt(ui_->soundList->viewport()->mapToGlobal(row.bottomLeft()));
  });
  connect(ui_->soundButton, &QAbstractButton::clicked, this,
          [this] { ChooseSoundAt(ui_->soundButton->mapToGlobal(ui_->soundButton->rect().bottomLeft())); });
  connect(ui_->channelBox, &QSpinBox::valueChanged, this, [this](int channel) {
    const auto [staff, voice] = Current();
    emit ChannelChosen(staff, voice, channel - 1);
  });
  UpdateControls();
}

SoundPage::~SoundPage() = default;

void SoundPage::ShowScore(std::shared_ptr<const ScoreAtHand> score, const ScoreParameters& parameters) {
  QTreeWidget& list = *ui_->soundList;
  const QSignalBlocker quiet(list);
  const int row =
      score == score_ && list.currentItem() != nullptr ? list.indexOfTopLevelItem(list.currentItem()) : 0;
  const bool same = score == score_ && score_ != nullptr;
  score_ = std::move(score);
  parameters_ = parameters;
  if (!same) list.clear();
  int next = 0;
  for (std::size_t staff = 0; score_ != nullptr && staff < score_->staves.size(); ++staff) {
    const StaffAtHand& at = score_->staves[staff];
    for (std::size_t voice = 0; voice < at.voices; ++voice) {
      QTreeWidgetItem* const item = same ? list.topLevelItem(next) : new QTreeWidgetItem(&list);
      ++next;
      item->setData(0, kStaffRole, static_cast<int>(staff));
      item->setData(0, kVoiceRole, static_cast<int>(voice));
      item->setText(kStaff, ToQt(at.name));
      item->setText(kVoice, ToQt(Format(Text(texts::ScoreVoiceNumber), voice + 1)));
      item->setText(kChannel, QString::number(ChannelOf(*score_, parameters_, staff, voice) + 1));
      item->setText(kSound, at.usesNoteMap ? QtText(texts::ScoreSoundOfDrums)
                            : voice > 0    ? QtText(texts::ScoreSoundAsFirst)
                                           : SoundName(SoundOf(*score_, parameters_, staff)));
    }
  }
  if (score_ == nullptr) (new QTreeWidgetItem(&list, {QtText(texts::ScoreNoneAtHand)}))->setDisabled(true);
  if (score_ != nullptr) list.setCurrentItem(list.topLevelItem(row));
  UpdateControls();
}

SoundPage::Row SoundPage::Current() const {
  const QTreeWidgetItem* const item = ui_->soundList->currentItem();
  if (score_ == nullptr || item == nullptr) return {-1, -1};
  return {item->data(0, kStaffRole).toInt(), item->data(0, kVoiceRole).toInt()};
}

bool SoundPage::HasSound(Row row) const {
  return row.staff >= 0 && row.voice == 0 && !score_->staves[static_cast<std::size_t>(row.staff)].usesNoteMap;
}

void SoundPage::UpdateControls() {
  const Row row = Current();
  const QSignalBlocker quiet(ui_->channelBox);
  ui_->channelBox->setEnabled(row.staff >= 0);
  ui_->soundButton->setEnabled(HasSound(row));
  if (row.staff < 0) return;
  ui_->channelBox->setValue(ChannelOf(*score_, parameters_, static_cast<std::size_t>(row.staff),
                                      static_cast<std::size_t>(row.voice)) +
                            1);
}

void SoundPage::ChooseSoundAt(const QPoint& place) {
  const Row row = Current();
  if (!HasSound(row)) return;
  const auto menu = SoundMenu(SoundOf(*score_, parameters_, static_cast<std::size_t>(row.staff)));
  const QAction* const chosen = menu->exec(place);
  if (chosen != nullptr) emit SoundChosen(row.staff, chosen->data().toInt() & 0xFF);
}

}  // namespace ts5
