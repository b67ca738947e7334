#include "app/run_panel.h"

#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "app/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/ui/qt_text.h"
#include "platform/text.h"

namespace ts5 {
namespace {

constexpr int kItemSteps = 1000;
// New hits appear so often; a view of many rows is laid out anew each time, so that it grows more rarely.
constexpr int kHitInterval = 50;                   // milliseconds
constexpr std::size_t kRowsPerMillisecond = 1500;  // that wait longer
constexpr int kMostProtocolLines = 5000;           // older lines go

}  // namespace

RunPanel::RunPanel(QWidget* parent)
    : QWidget(parent),
      status_(new QLabel(this)),
      files_(new QProgressBar(this)),
      item_(new QProgressBar(this)),
      hitView_(new HitView(hits_, this)),
      protocolView_(new QListView(this)) {
  setObjectName("runPanel");
  status_->setObjectName("runStatus");
  status_->setTextFormat(Qt::PlainText);
  status_->setAccessibleName(QtText(texts::RunStatusName));
  status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  files_->setObjectName("filesProgress");
  files_->setAccessibleName(QtText(texts::FilesProgressName));
  item_->setObjectName("itemProgress");
  item_->setAccessibleName(QtText(texts::ItemProgressName));
  item_->setRange(0, kItemSteps);
  item_->setTextVisible(false);
  item_->setMaximumHeight(10);
  hitTimer_.setSingleShot(true);
  connect(&hitTimer_, &QTimer::timeout, this, [this] {
    if (hits_.rowCount() < static_cast<int>(results_.Size())) ShowHits();
  });
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
  layout->addWidget(status_);
  layout->addWidget(files_);
  layout->addWidget(item_);
  layout->addWidget(hitView_, 1);
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
  SetStatus({});
  protocol_.setStringList({});
  protocolView_->hide();
}

void RunPanel::SetStatus(const QString& text) {
  status_->setText(text);
  status_->setToolTip(text);
}

void RunPanel::SetProgress(const RunProgress& progress) {
  files_->setTextVisible(progress.items > 0);
  files_->setFormat(QStringLiteral("%v / %m"));
  files_->setRange(0, static_cast<int>(progress.items));  // 0 to 0: how many is not known
  files_->setValue(static_cast<int>(progress.item));
  item_->setValue(static_cast<int>(std::lround(std::clamp(progress.fraction, 0.0, 1.0) * kItemSteps)));
}

void RunPanel::BeginSearch(SearchRecord record, OldSearchResults policy, const std::function<bool()>& ask) {
  results_.Begin(std::move(record), policy, ask);
  searching_ = true;
  hits_.ShowAnew();
}

void RunPanel::EndSearch(const SearchRecord& record) {
  results_.End(record);
  searching_ = false;
  hitTimer_.stop();
  ShowHits();
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
