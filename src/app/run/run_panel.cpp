#include "app/run/run_panel.h"

#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "app/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/run_time.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr int kItemSteps = 1000;
constexpr qint64 kNewsLast = 15'000;  // milliseconds

int Steps(double fraction) {
  return static_cast<int>(std::lround(std::clamp(fraction, 0.0, 1.0) * kItemSteps));
}

// New hits appear so often; a view of many rows is laid out anew each time, so that it grows more rarely.
constexpr int kHitInterval = 50;                   // milliseconds
constexpr std::size_t kRowsPerMillisecond = 1500;  // that wait longer
constexpr int kMostProtocolLines = 5000;           // older lines go

}  // namespace

RunPanel::RunPanel(QWidget* parent)
    : QWidget(parent),
      task_(new ElidedLabel(this)),
      status_(new ElidedLabel(this)),
      time_(new ElidedLabel(this)),
      files_(new QProgressBar(this)),
      item_(new QProgressBar(this)),
      buffer_(new QProgressBar(this)),
      hitView_(new HitView(hits_, this)),
      hitMusic_(new HitMusic(this)),
      protocolView_(new QListView(this)) {
  setObjectName("runPanel");
  task_->setObjectName("runTask");
  task_->setAccessibleName(QtText(texts::RunTaskName));
  status_->setObjectName("runStatus");
  status_->setAccessibleName(QtText(texts::RunStatusName));
  for (QLabel* label : {task_, status_, time_})
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  files_->setObjectName("filesProgress");
  files_->setAccessibleName(QtText(texts::FilesProgressName));
  item_->setObjectName("itemProgress");
  item_->setAccessibleName(QtText(texts::ItemProgressName));
  item_->setTextVisible(false);
  item_->setMaximumHeight(10);
  buffer_->setObjectName("bufferProgress");
  buffer_->setAccessibleName(QtText(texts::BufferProgressName));
  buffer_->setFormat(QtText(texts::BufferProgress));
  for (QProgressBar* bar : {item_, buffer_}) bar->setRange(0, kItemSteps);
  time_->setObjectName("runTime");
  time_->setAccessibleName(QtText(texts::RunTimeName));
  hitTimer_.setSingleShot(true);
  connect(&hitTimer_, &QTimer::timeout, this, [this] {
    if (hits_.rowCount() < static_cast<int>(results_.Size())) ShowHits();
  });
  connect(hitView_, &HitView::SelectionChanged, this, &RunPanel::ShowMusic);
  connect(&hits_, &QAbstractItemModel::modelReset, this, &RunPanel::ShowMusic);
  protocolView_->setObjectName("protocol");
  protocolView_->setAccessibleName(QtText(texts::ProtocolName));
  protocolView_->setModel(&protocol_);
  protocolView_->setUniformItemSizes(true);
  protocolView_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  protocolView_->setTabKeyNavigation(false);
  protocolView_->hide();

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(4);
  layout->addWidget(task_);
  layout->addWidget(files_);
  layout->addWidget(status_);
  layout->addWidget(item_);
  layout->addWidget(buffer_);
  layout->addWidget(time_);
  layout->addWidget(hitView_, 1);
  layout->addWidget(hitMusic_);
  layout->addWidget(protocolView_, 1);
  layout->addStretch(0);
  SetFilter(FilterId::None);
  Reset();
}

void RunPanel::SetFilter(FilterId filter) {
  const bool search = IsFilter(filter) && IsSearch(filter);
  files_->setVisible(!search);
  item_->setVisible(!search);
  hitView_->setVisible(search);
  ShowMusic();
  if (filter == filter_) return;
  filter_ = filter;
  if (search && results_.Size() == 0) {
    SearchRecord none;  // names the columns
    none.kind = SearchKindOf(filter);
    results_.End(none);
    hits_.ShowAnew();
  }
  Reset();
}

void RunPanel::Reset() {
  files_->setRange(0, 1);
  files_->setValue(0);
  files_->setTextVisible(false);
  item_->setRange(0, kItemSteps);
  item_->setValue(0);
  buffer_->hide();
  progress_.reset();
  ShowTime();
  SetTask({});
  SetStatus({});
  protocol_.setStringList({});
  protocolView_->hide();
}

void RunPanel::SetTask(const QString& text) {
  task_->ShowLine(text);
  task_->setVisible(!text.isEmpty());
}

void RunPanel::SetStatus(const QString& text) {
  status_->ShowLine(text);
  status_->setVisible(!text.isEmpty());
}

void RunPanel::SetProgress(const RunProgress& progress) {
  files_->setTextVisible(progress.items > 0 || progress.whole);
  files_->setFormat(progress.whole ? QStringLiteral("%p %") : QStringLiteral("%v / %m"));
  // 0 to 0: how many there are is not known.
  files_->setRange(0, progress.whole ? kItemSteps : static_cast<int>(progress.items));
  files_->setValue(progress.whole ? Steps(*progress.whole) : static_cast<int>(progress.item));
  item_->setValue(Steps(progress.fraction));
  buffer_->setVisible(progress.buffer.has_value());
  buffer_->setValue(Steps(progress.buffer.value_or(0)));
  progress_ = progress;
  sinceProgress_.start();
  ShowTime();
}

// What is left since the last news; a run that is long in coming is uncertain again.
std::optional<std::chrono::milliseconds> RunPanel::RemainingNow() const {
  if (!progress_ || !progress_->remaining || sinceProgress_.elapsed() > kNewsLast) return std::nullopt;
  return std::max(std::chrono::milliseconds(0),
                  *progress_->remaining - std::chrono::milliseconds(sinceProgress_.elapsed()));
}

void RunPanel::ShowTime() {
  QString text;
  if (progress_)
    text = ToQt(
        TimeText(progress_->elapsed + std::chrono::milliseconds(sinceProgress_.elapsed()), RemainingNow()));
  time_->setVisible(!text.isEmpty());
  if (text != time_->text()) time_->ShowLine(text);
}

QString RunPanel::BriefProgress() const {
  if (!progress_ || (progress_->items == 0 && !progress_->whole)) return {};
  QString text = QString::number(static_cast<int>(100 * WholeOf(*progress_))) + QStringLiteral(" %");
  if (const std::string left = RemainingText(RemainingNow()); !left.empty()) text += ", " + ToQt(left);
  return text;
}

void RunPanel::BeginSearch(SearchRecord record, OldSearchResults policy, const std::function<bool()>& ask) {
  results_.Begin(std::move(record), policy, ask);
  searching_ = true;
  hits_.ShowAnew();
}

void RunPanel::EndSearch(const RunResult& result) {
  if (const auto* const record = std::any_cast<SearchRecord>(&result.payload)) results_.End(*record);
  searching_ = false;
  hitTimer_.stop();
  ShowHits();
}

void RunPanel::ShowMusic() {
  const auto row = hitView_->isHidden() ? std::nullopt : hitView_->CurrentHit();
  if (row && *row < results_.Size()) {
    hitMusic_->Show(results_.Hit(*row), results_.Notes(*row));
  } else {
    hitMusic_->Show(std::nullopt);
  }
}

// The end of the list stays in view, unless the user looks at something else.
void RunPanel::ShowHits() {
  const QScrollBar* bar = hitView_->verticalScrollBar();
  const bool follow = bar->value() == bar->maximum();
  hits_.ShowNew();
  if (follow) hitView_->scrollToBottom();
  hitTimer_.start(kHitInterval + static_cast<int>(results_.Size() / kRowsPerMillisecond));
}

bool RunPanel::Take(const RunNews& news) {
  bool kept = true;
  for (const SearchHit& hit : news.hits) kept = kept && Succeeded(results_.Add(hit));
  if (!news.hits.empty() && !hitTimer_.isActive()) ShowHits();
  if (news.progress) SetProgress(*news.progress);
  if (news.task) SetTask(ToQt(*news.task));
  if (news.status) SetStatus(ToQt(*news.status));
  if (news.lines.empty()) return kept;
  const int first = protocol_.rowCount();
  protocol_.insertRows(first, static_cast<int>(news.lines.size()));
  for (int i = 0; i < static_cast<int>(news.lines.size()); ++i) {
    protocol_.setData(protocol_.index(first + i), ToQt(news.lines[static_cast<std::size_t>(i)]));
  }
  if (const int surplus = protocol_.rowCount() - kMostProtocolLines; surplus > 0)
    protocol_.removeRows(0, surplus);
  protocolView_->show();
  protocolView_->scrollToBottom();
  return kept;
}

}  // namespace ts5
