#include "preview/ui/preview_window.h"

#include <QAction>
#include <QLabel>
#include <QScreen>
#include <QShortcut>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>

#include "converters/score_formats.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/input_file.h"
#include "platform/files/paths.h"
#include "preview/texts.h"
#include "preview/ui/page_view.h"
#include "resources/icons.h"
#include "score/score_info.h"

namespace ts5::preview {
namespace {

constexpr QSize kUsualSize{900, 900};
constexpr QSize kFrame{8, 40};  // what the desktop adds
constexpr double kStep = 1.25;

void ShowInWindow(const std::string& path, const std::optional<SearchHit>& hit, DialogHost& host,
                  const QWidget* owner) {
  auto* const window = new PreviewWindow(host);
  window->setAttribute(Qt::WA_DeleteOnClose);
  window->setAttribute(Qt::WA_QuitOnClose, false);
  QObject::connect(owner, &QObject::destroyed, window, [window] { delete window; });
  window->Open(path, hit);
  window->show();
}

}  // namespace

bool IsScoreName(const std::string& path) {
  return converters::ScoreFormatOfName(FileNameOf(path)).has_value();
}

void ShowNotation(const std::string& path, DialogHost& host, const QWidget* owner) {
  ShowInWindow(path, {}, host, owner);
}

void ShowNotation(const SearchHit& hit, DialogHost& host, const QWidget* owner) {
  ShowInWindow(hit.file, hit, host, owner);
}

PreviewWindow::PreviewWindow(DialogHost& host)
    : stack_(new QStackedWidget(this)), message_(new QLabel(this)), view_(new PageView(this)) {
  new QShortcut(Qt::Key_Escape, this, this, &QWidget::close);
  new QShortcut(Qt::Key_F1, this, this, [&host] { host.OpenHelp(QStringLiteral("notenbild.htm")); });
  message_->setAlignment(Qt::AlignCenter);
  message_->setWordWrap(true);
  stack_->addWidget(message_);
  stack_->addWidget(view_);
  setCentralWidget(stack_);
  BuildToolBar();
  statusBar();
  resize(kUsualSize.boundedTo(screen()->availableSize() - kFrame));
  connect(view_, &PageView::PageChanged, this, &PreviewWindow::Refresh);
}

PreviewWindow::~PreviewWindow() {
  reader_.request_stop();
  if (reader_.joinable()) reader_.join();
  view_->SetPages(nullptr);
}

QString PreviewWindow::Message() const {
  return stack_->currentWidget() == message_ ? message_->text() : QString();
}

void PreviewWindow::BuildToolBar() {
  QToolBar* const bar = addToolBar(QtText(texts::PreviewPage));
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  const auto add = [this, bar](TextId text, const char* icon, const QKeySequence& key, auto act) {
    QAction* const action = bar->addAction(Icon(icon), QtText(text));
    if (!key.isEmpty()) action->setShortcut(key);
    action->setToolTip(QtText(text));
    if (QWidget* const button = bar->widgetForAction(action)) button->setFocusPolicy(Qt::TabFocus);
    connect(action, &QAction::triggered, this, act);
    return action;
  };
  first_ = add(texts::PreviewFirst, "previous", {}, [this] { view_->ShowPage(0); });
  previous_ = add(texts::PreviewPrevious, "back", Qt::Key_PageUp,
                  [this] { view_->ShowPage(view_->Page() == 0 ? 0 : view_->Page() - 1); });
  number_ = new QSpinBox(bar);
  number_->setAccessibleName(QtText(texts::PreviewPage));
  number_->setKeyboardTracking(false);
  bar->addWidget(number_);
  connect(number_, &QSpinBox::valueChanged, this, [this](int page) {
    if (page > 0 && static_cast<std::size_t>(page - 1) != view_->Page())
      view_->ShowPage(static_cast<std::size_t>(page - 1));
  });
  next_ =
      add(texts::PreviewNext, "forward", Qt::Key_PageDown, [this] { view_->ShowPage(view_->Page() + 1); });
  last_ = add(texts::PreviewLast, "next", {}, [this] { view_->ShowPage(SIZE_MAX); });
  bar->addSeparator();
  const auto word = [this, bar](TextId text, const QKeySequence& key, auto act) {
    QAction* const action = bar->addAction(QtText(text));
    action->setShortcut(key);
    if (QWidget* const button = bar->widgetForAction(action)) button->setFocusPolicy(Qt::TabFocus);
    connect(action, &QAction::triggered, this, act);
  };
  word(texts::PreviewSmaller, QKeySequence::ZoomOut, [this] { view_->Zoom(1 / kStep); });
  word(texts::PreviewLarger, QKeySequence::ZoomIn, [this] { view_->Zoom(kStep); });
  word(texts::PreviewPageWidth, Qt::CTRL | Qt::Key_1, [this] { view_->SetFit(PageView::Fit::Width); });
  word(texts::PreviewWholePage, Qt::CTRL | Qt::Key_0, [this] { view_->SetFit(PageView::Fit::Page); });
}

void PreviewWindow::Open(const std::string& path, const std::optional<SearchHit>& hit) {
  setWindowTitle(ToQt(Format(Text(texts::PreviewTitle), FileNameOf(path))));
  message_->setText(QtText(texts::PreviewReading));
  stack_->setCurrentWidget(message_);
  view_->SetPages(nullptr);
  pages_.reset();
  Refresh();
  reader_.request_stop();
  if (reader_.joinable()) reader_.join();
  const unsigned round = ++round_;
  reader_ = std::jthread([this, path, hit, round](const std::stop_token& stop) {
    auto read = std::make_shared<Read>(ReadFile(path, stop));
    if (stop.stop_requested()) return;
    QMetaObject::invokeMethod(
        this,
        [this, read, hit, round] {
          if (round == round_) Take(std::move(*read), hit);
        },
        Qt::QueuedConnection);
  });
}

PreviewWindow::Read PreviewWindow::ReadFile(const std::string& path, const std::stop_token& stop) {
  const CancelCheck cancelled = [&stop] { return stop.stop_requested(); };
  const auto failed = [](TextId text) { return Read{nullptr, std::string(Text(text))}; };
  const auto input = InputFile::Open(path);
  if (!input) return failed(texts::PreviewFailed);
  const auto file = input->ReadAll(kMaxScoreFile, cancelled);
  if (!file) return failed(texts::PreviewFailed);
  auto score = converters::ReadAnyScore(*file, cancelled);
  if (!score) {
    const converters::ScoreFault& fault = score.error();
    if (fault.bar < 0 || fault.staff < 0) return failed(texts::PreviewFailed);
    return {nullptr, Format(Text(texts::PreviewFailedAt), fault.bar + 1, fault.staff + 1)};
  }
  auto pages = std::make_unique<ScorePages>(std::move(score->document), cancelled);
  if (pages->Count() == 0) return failed(texts::PreviewEmpty);
  return {std::move(pages), {}};
}

void PreviewWindow::Take(Read read, const std::optional<SearchHit>& hit) {
  pages_ = std::move(read.pages);
  if (pages_ == nullptr) {
    message_->setText(ToQt(read.message));
  } else {
    stack_->setCurrentWidget(view_);
    view_->SetPages(pages_.get());
    hit ? view_->ShowSystem(pages_->PlaceOf(*hit)) : view_->ShowPage(0);
    view_->setFocus();
  }
  Refresh();
  emit Ready();
}

void PreviewWindow::Refresh() {
  const std::size_t count = pages_ == nullptr ? 0 : pages_->Count();
  const std::size_t page = view_->Page();
  for (QAction* action : {first_, previous_}) action->setEnabled(count > 0 && page > 0);
  for (QAction* action : {next_, last_}) action->setEnabled(page + 1 < count);
  number_->setEnabled(count > 1);
  number_->setRange(count > 0 ? 1 : 0, static_cast<int>(count));
  number_->setValue(count > 0 ? static_cast<int>(page) + 1 : 0);
  QString status;
  if (count > 0) {
    const auto [first, last] = pages_->Bars(page);
    status = ToQt(Format(Text(texts::PreviewPlace), page + 1, count, first, last));
  }
  statusBar()->showMessage(status);
}

}  // namespace ts5::preview
