#include "frame/ui/results_dialog.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <algorithm>
#include <array>
#include <utility>

#include "frame/run_report.h"
#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "ui_RESULTS.h"

namespace ts5 {
namespace {

constexpr QSize kSizeWithDetails{820, 600};
constexpr int kNarrowestDetails = 560;              // its buttons are whole
constexpr std::array kColumnWidths{240, 110, 330};  // the last column takes the rest

Outcome Write(const std::string& path, const std::string& text) {
  auto file = StagedFile::Create(path);
  if (!file) return file.error();
  if (const Outcome written = file->Write(AsBytes(text)); Failed(written)) return written;
  return file->Commit();
}

}  // namespace

ResultsDialog::ResultsDialog(RunResult result, bool mayRepeat, DialogHost& host, QWidget* parent)
    : HostedDialog(host, {}, parent),
      result_(std::move(result)),
      items_(result_),
      ui_(std::make_unique<Ui::RESULTS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(ToQt(TitleText(result_)));

  const std::array<QLabel*, 4> labels{ui_->line1Label, ui_->line2Label, ui_->line3Label, ui_->line4Label};
  const std::array<QLineEdit*, 4> counts{ui_->line1Count, ui_->line2Count, ui_->line3Count, ui_->line4Count};
  const auto lines = Lines(result_);
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const RunLine& line = lines.at(i);
    const QString label = ToQt(line.label);
    labels.at(i)->setText(label);
    labels.at(i)->setVisible(!label.isEmpty());
    counts.at(i)->setText(QString::number(line.count));
    counts.at(i)->setAccessibleName(label);
    counts.at(i)->setVisible(!label.isEmpty());
  }
  ui_->remarks->setPlainText(ToQt(RemarksText(result_)));
  ui_->cancelButton->setVisible(result_.cancelButton);

  sorted_.setSourceModel(&items_);
  sorted_.setSortRole(ResultItemsModel::kSortRole);
  sorted_.setSortLocaleAware(true);
  // Before the model comes: among equal outcomes the files stay in the order of the run.
  ui_->items->header()->setSortIndicator(static_cast<int>(ReportColumn::Outcome), Qt::AscendingOrder);
  ui_->items->setModel(&sorted_);
  ui_->items->sortByColumn(static_cast<int>(ReportColumn::Outcome), Qt::AscendingOrder);
  for (std::size_t i = 0; i < kColumnWidths.size(); ++i)
    ui_->items->setColumnWidth(static_cast<int>(i), kColumnWidths.at(i));
  ui_->detailsButton->setVisible(!result_.items.empty());
  ui_->notationButton->hide();
  ui_->undoButton->hide();
  connect(ui_->undoButton, &QPushButton::clicked, this, [this] {
    accept();
    emit UndoWanted();
  });
  ui_->repeatButton->setVisible(mayRepeat);
  ui_->repeatButton->setEnabled(!FailedSources(result_).empty());
  connect(ui_->detailsButton, &QPushButton::toggled, this, &ResultsDialog::ShowDetails);
  connect(ui_->copyButton, &QPushButton::clicked, this, &ResultsDialog::Copy);
  connect(ui_->saveButton, &QPushButton::clicked, this, &ResultsDialog::Save);
  connect(ui_->repeatButton, &QPushButton::clicked, this, [this] {
    accept();
    emit Repeat(FailedSources(result_));
  });
  connect(ui_->items, &QAbstractItemView::activated, this, [this](const QModelIndex& index) {
    const RunItem& item = result_.items[static_cast<std::size_t>(sorted_.mapToSource(index).row())];
    emit FileChosen(item.source.empty() ? item.destination : item.source);
  });
  ui_->items->installEventFilter(this);
  ShowDetails(false);
  ui_->okButton->setFocus();
}

ResultsDialog::~ResultsDialog() = default;

void ResultsDialog::ShowQuestion(const QString& question) {
  ui_->questionLabel->setText(question);
  ui_->questionLabel->show();
}

void ResultsDialog::OfferUndo(std::size_t notKept) {
  ui_->undoButton->show();
  if (notKept == 0) return;
  ui_->remarks->appendPlainText(ToQt(notKept == 1 ? std::string(Text(texts::UndoOneLost))
                                                  : Format(Text(texts::UndoManyLost), notKept)));
}

void ResultsDialog::OfferNotation(std::function<bool(const std::string&)> fits) {
  hasNotation_ = std::move(fits);
  const bool any = std::ranges::any_of(result_.items, [this](const RunItem& item) {
    return hasNotation_(item.destination) || hasNotation_(item.source);
  });
  ui_->notationButton->setVisible(any);
  const auto refresh = [this] { ui_->notationButton->setEnabled(!NotationFile().empty()); };
  connect(ui_->items->selectionModel(), &QItemSelectionModel::currentChanged, this, refresh);
  connect(ui_->notationButton, &QPushButton::clicked, this, [this] {
    if (const std::string path = NotationFile(); !path.empty()) emit NotationWanted(path);
  });
  refresh();
}

std::string ResultsDialog::NotationFile() const {
  const QModelIndex index = ui_->items->currentIndex();
  if (!index.isValid() || !hasNotation_) return {};
  const RunItem& item = result_.items[static_cast<std::size_t>(sorted_.mapToSource(index).row())];
  if (item.code >= 0 && hasNotation_(item.destination)) return item.destination;
  return hasNotation_(item.source) ? item.source : std::string();
}

QString ResultsDialog::HelpTopic() const {
  return QStringLiteral("Befehle-aktion-ausführen-ergebnisse.htm");
}

void ResultsDialog::ShowDetails(bool shown) {
  ui_->details->setVisible(shown);
  if (!shown) return;
  setMinimumWidth(kNarrowestDetails);
  resize(size().expandedTo(kSizeWithDetails));
  ui_->items->setFocus();
  if (!ui_->items->currentIndex().isValid()) ui_->items->setCurrentIndex(sorted_.index(0, 0));
}

void ResultsDialog::keyPressEvent(QKeyEvent* event) {
  // The table has taken Enter for its row and passes it on all the same.
  if (ui_->items->hasFocus() && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) return;
  HostedDialog::keyPressEvent(event);
}

// The table by itself would copy one cell.
bool ResultsDialog::eventFilter(QObject* watched, QEvent* event) {
  const bool copy =
      event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy);
  if (!copy) return HostedDialog::eventFilter(watched, event);
  Copy();
  return true;
}

std::vector<std::size_t> ResultsDialog::ChosenItems() const {
  const QItemSelectionModel& selection = *ui_->items->selectionModel();
  const bool all = selection.selectedRows().size() < 2;
  std::vector<std::size_t> items;
  for (int row = 0; row < sorted_.rowCount(); ++row) {
    if (all || selection.isRowSelected(row))
      items.push_back(static_cast<std::size_t>(sorted_.mapToSource(sorted_.index(row, 0)).row()));
  }
  return items;
}

void ResultsDialog::Copy() {
  QGuiApplication::clipboard()->setText(ToQt(ReportLines(result_, ChosenItems())));
}

void ResultsDialog::Save() {
  const auto path = AskFileToSave({.title = QtText(texts::ReportSaveTitle),
                                   .start = std::string(Text(texts::ReportFileName)),
                                   .filter = Text(texts::FileFilterText),
                                   .helpTopic = HelpTopic()},
                                  Host(), this);
  if (path && Failed(Write(*path, ReportText(result_))))
    ShowWarning(this, ToQt(Format(Text(texts::ReportNotSaved), *path)));
}

}  // namespace ts5
