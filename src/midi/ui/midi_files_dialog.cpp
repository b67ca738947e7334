#include "midi/ui/midi_files_dialog.h"

#include <QHeaderView>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <array>
#include <utility>

#include "frame/ui/qt_text.h"
#include "midi/midi_properties.h"
#include "midi/texts.h"
#include "midi/ui/midi_properties_dialog.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

enum Column : int { kFile, kTitle, kLength, kKey, kMetre, kTempo, kTracks, kNotes, kState, kColumns };

constexpr std::array<TextId, kColumns> kHeads{
    texts::MidiFilesColumnFile,   texts::MidiPropertyTitle, texts::MidiPropertyLength,
    texts::MidiPropertyKey,       texts::MidiPropertyMetre, texts::MidiPropertyTempo,
    texts::MidiFilesColumnTracks, texts::MidiPropertyNotes, texts::MidiPropertyState};

constexpr int kPlaceRole = Qt::UserRole;      // which of the files; in the first column
constexpr int kValueRole = Qt::UserRole + 1;  // what a column of numbers is sorted by

class FileItem : public QTreeWidgetItem {
 public:
  using QTreeWidgetItem::QTreeWidgetItem;
  bool operator<(const QTreeWidgetItem& other) const override {
    const int column = treeWidget()->sortColumn();
    const QVariant mine = data(column, kValueRole);
    const QVariant its = other.data(column, kValueRole);
    if (mine.isValid() || its.isValid()) return mine.toDouble() < its.toDouble();
    return QString::localeAwareCompare(text(column), other.text(column)) < 0;
  }
};

}  // namespace

MidiFilesPage::MidiFilesPage(std::vector<std::string> paths, DialogHost& host, QWidget* parent)
    : QWidget(parent),
      paths_(std::move(paths)),
      host_(host),
      list_(new QTreeWidget(this)),
      total_(new QLabel(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(list_);
  layout->addWidget(total_);
  list_->setObjectName("midiFileList");
  total_->setObjectName("midiFilesTotal");
  total_->setTextFormat(Qt::PlainText);
  list_->setAccessibleName(QtText(texts::MidiFilesPrompt));
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setAlternatingRowColors(true);
  list_->setSortingEnabled(true);
  list_->sortByColumn(kFile, Qt::AscendingOrder);
  QStringList heads;
  for (const TextId head : kHeads) heads << QtText(head);
  list_->setHeaderLabels(heads);
  const int character = list_->fontMetrics().averageCharWidth();
  constexpr std::array<int, kColumns> kWidths{28, 26, 13, 20, 12, 24, 9, 9, 20};  // in characters
  int width = 0;
  for (int column = 0; column < kColumns; ++column) {
    list_->setColumnWidth(column, kWidths[static_cast<std::size_t>(column)] * character);
    width += list_->columnWidth(column);
  }
  list_->setMinimumSize(std::min(width + 40, 760), 220);
  connect(list_, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) { OpenProperties(*item); });
  ShowTotal();
  reader_ = std::jthread([this](const std::stop_token& stop) {
    for (std::size_t i = 0; i < paths_.size() && !stop.stop_requested(); ++i) {
      auto summary = SummariseMidiFile(paths_[i], [&stop] { return stop.stop_requested(); });
      loop_.Post([this, i, summary = std::move(summary)] { Show(i, summary); });
    }
  });
}

void MidiFilesPage::Show(std::size_t file, const Result<MidiSummary>& summary) {
  auto* const item = new FileItem;
  item->setText(kFile, ToQt(FileNameOf(paths_[file])));
  item->setToolTip(kFile, ToQt(paths_[file]).toHtmlEscaped());
  item->setData(kFile, kPlaceRole, QVariant::fromValue(static_cast<qulonglong>(file)));
  if (summary) {
    item->setText(kTitle, ToQt(summary->title));
    item->setText(kLength, ToQt(MidiLengthText(summary->length)));
    item->setData(kLength, kValueRole, std::chrono::duration<double>(summary->length).count());
    item->setText(kKey, ToQt(MidiKeysText(*summary)));
    item->setText(kMetre, ToQt(MidiMetresText(*summary)));
    item->setText(kTempo, ToQt(MidiTempoText(*summary)));
    item->setData(kTempo, kValueRole, summary->tempos.empty() ? 0 : 60e6 / summary->tempos.front().quarter);
    item->setText(kTracks, QString::number(summary->tracks.size()));
    item->setData(kTracks, kValueRole, static_cast<double>(summary->tracks.size()));
    item->setText(kNotes, QString::number(summary->notes));
    item->setData(kNotes, kValueRole, static_cast<double>(summary->notes));
    item->setText(kState, ToQt(MidiStateText(*summary)).replace('\n', "; "));
    length_ += summary->length;
    if (summary->Damaged()) ++damaged_;
  } else {
    item->setText(kState, QtText(texts::MidiFilesUnreadable));
    ++damaged_;
  }
  for (const int column : {kTitle, kKey, kMetre, kTempo, kState})
    item->setToolTip(column, item->text(column).toHtmlEscaped());
  for (const int column : {kLength, kTracks, kNotes})
    item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
  list_->addTopLevelItem(item);
  if (list_->currentItem() == nullptr) list_->setCurrentItem(item);
  ++read_;
  ShowTotal();
}

void MidiFilesPage::ShowTotal() {
  if (read_ < paths_.size())
    return total_->setText(ToQt(Format(Text(texts::MidiFilesReading), read_, paths_.size())));
  const std::string length = MidiLengthText(length_);
  total_->setText(ToQt(damaged_ == 0 ? Format(Text(texts::MidiFilesTotal), read_, length)
                                     : Format(Text(texts::MidiFilesDamaged), read_, length, damaged_)));
}

void MidiFilesPage::OpenProperties(const QTreeWidgetItem& item) {
  const std::string& path = paths_[item.data(kFile, kPlaceRole).toULongLong()];
  if (const auto properties = ReadMidiProperties(path))
    MidiPropertiesDialog(*properties, host_, window())->exec();
}

std::unique_ptr<PropertiesDialog> MidiFilesDialog(const std::vector<std::string>& paths, DialogHost& host,
                                                  QWidget* parent) {
  return std::make_unique<PropertiesDialog>(ToQt(Format(Text(texts::MidiFilesTitle), paths.size())),
                                            QtText(texts::MidiFilesPrompt),
                                            std::make_unique<MidiFilesPage>(paths, host), host, parent);
}

}  // namespace ts5
