#include "app/shell/help_window.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTextDocument>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QUrl>
#include <QWindow>
#include <algorithm>

#include "app/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

const QString kContentsPage = QStringLiteral("inhalt.htm");
constexpr int kTopicRole = Qt::UserRole;

QUrl PageUrl(const QString& page) {
  QUrl url;
  url.setScheme(QStringLiteral("qrc"));
  url.setPath(QStringLiteral("/help/") + page);
  return url;
}

// What the desktop adds around a window.
constexpr int kTitleHeight = 34;
constexpr int kEdge = 6;
constexpr int kNarrow = 560;
constexpr QSize kUsualSize{900, 640};
constexpr QSize kLeastSize{kNarrowestHelp, 200};

QString PlainText(QString html) {
  html.remove(QRegularExpression(QStringLiteral("<[^>]*>")));
  return html.replace(QLatin1String("&amp;"), QLatin1String("&")).simplified();
}

}  // namespace

HelpPlace PlaceBeside(const QRect& dialog, const QRect& screen, const QSize& wanted) {
  QRect moved = dialog;
  const auto room = [&] {
    return std::max(moved.left() - screen.left(), screen.right() - moved.right()) - 2 * kEdge;
  };
  // A dialog in the middle goes aside where that is enough.
  if (room() < kNarrowestHelp && screen.width() - moved.width() - 2 * kEdge >= kNarrowestHelp)
    moved.moveLeft(screen.left());
  const int width = std::min({std::max(room(), kNarrowestHelp), wanted.width(), screen.width() - 2 * kEdge});
  const int height = std::min(wanted.height(), screen.height() - kTitleHeight - kEdge);
  const bool toTheRight = screen.right() - moved.right() >= moved.left() - screen.left();
  const int x = toTheRight ? std::min(moved.right() + kEdge, screen.right() - kEdge - width)
                           : std::max(moved.left() - kEdge - width, screen.left() + kEdge);
  const int y = std::clamp(moved.top() + kTitleHeight, screen.top() + kTitleHeight,
                           std::max(screen.bottom() - kEdge - height, screen.top() + kTitleHeight));
  return {moved.topLeft(), {x, y, width, height}};
}

QString HelpPage(const QString& topic) {
  InitializeResources();
  const QString wanted = topic.section('#', 0, 0);
  const QStringList pages = QDir(QStringLiteral(":/help")).entryList({QStringLiteral("*.htm")}, QDir::Files);
  for (const QString& page : pages) {
    if (page.compare(wanted, Qt::CaseInsensitive) == 0) return page;
  }
  return kContentsPage;
}

std::vector<HelpEntry> HelpContents() {
  InitializeResources();
  std::vector<HelpEntry> entries;
  QFile file(QStringLiteral(":/help/") + kContentsPage);
  if (!file.open(QIODevice::ReadOnly)) return entries;
  const QString html = QString::fromUtf8(file.readAll());
  static const QRegularExpression line(
      QStringLiteral("<h2>(?<chapter>.*?)</h2>|<a href=\"(?<topic>[^\"]+)\">(?<title>.*?)</a>"),
      QRegularExpression::DotMatchesEverythingOption);
  for (auto matches = line.globalMatch(html); matches.hasNext();) {
    const QRegularExpressionMatch match = matches.next();
    const QString topic = match.captured(QStringLiteral("topic"));
    entries.push_back({PlainText(topic.isEmpty() ? match.captured(QStringLiteral("chapter"))
                                                 : match.captured(QStringLiteral("title"))),
                       topic});
  }
  return entries;
}

HelpWindow::HelpWindow(QWidget* parent)
    : QMainWindow(parent), contents_(new QTreeWidget), page_(new QTextBrowser) {
  InitializeResources();
  setWindowFlag(Qt::Window);
  setWindowTitle(QtText(texts::HelpCaption));
  setWindowIcon(Icon("help"));
  setObjectName(QStringLiteral("helpWindow"));
  setMinimumSize(kLeastSize);
  resize(kUsualSize.boundedTo(screen()->availableSize() - QSize(2 * kEdge, kTitleHeight + kEdge)));

  contents_->setAccessibleName(QtText(texts::HelpContentsName));
  contents_->setHeaderHidden(true);
  contents_->setMinimumWidth(180);
  page_->setAccessibleName(QtText(texts::HelpPageName));
  page_->setOpenExternalLinks(true);
  page_->setSearchPaths({QStringLiteral(":/help")});
  page_->document()->setDocumentMargin(18);

  auto* splitter = new QSplitter;
  splitter->addWidget(contents_);
  splitter->addWidget(page_);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({240, 660});
  setCentralWidget(splitter);

  BuildContents();
  BuildToolBar();
  ApplyColours();
  connect(qApp, &QGuiApplication::focusWindowChanged, this, &HelpWindow::StandBeforeDialogs);
  connect(page_, &QTextBrowser::sourceChanged, this, [this] { FollowPage(); });
  connect(contents_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    const QString topic = item == nullptr ? QString() : item->data(0, kTopicRole).toString();
    if (!topic.isEmpty() && HelpPage(topic) != CurrentTopic()) page_->setSource(PageUrl(HelpPage(topic)));
  });
}

void HelpWindow::BuildContents() {
  QTreeWidgetItem* chapter = nullptr;
  for (const HelpEntry& entry : HelpContents()) {
    QTreeWidgetItem* item = entry.topic.isEmpty() || chapter == nullptr ? new QTreeWidgetItem(contents_)
                                                                        : new QTreeWidgetItem(chapter);
    item->setText(0, entry.title);
    item->setData(0, kTopicRole, entry.topic);
    item->setIcon(0, Icon(entry.topic.isEmpty() ? "contents" : "txticon"));
    if (entry.topic.isEmpty()) {
      chapter = item;
      item->setExpanded(true);
    }
  }
}

void HelpWindow::BuildToolBar() {
  QToolBar* bar = addToolBar(QtText(texts::HelpToolBarName));
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  const auto add = [&](const char* icon, TextId text, const QKeySequence& keys, auto act) {
    QAction* action = bar->addAction(Icon(icon), QtText(text), this, act);
    action->setShortcut(keys);
    action->setToolTip(QStringLiteral("%1 (%2)").arg(QtText(text), keys.toString(QKeySequence::NativeText)));
    if (QWidget* button = bar->widgetForAction(action)) button->setFocusPolicy(Qt::TabFocus);
    return action;
  };
  QAction* back =
      add("back", texts::HelpBack, QKeySequence(Qt::ALT | Qt::Key_Left), [this] { page_->backward(); });
  QAction* forward =
      add("forward", texts::HelpForward, QKeySequence(Qt::ALT | Qt::Key_Right), [this] { page_->forward(); });
  add("contents", texts::HelpHome, QKeySequence(Qt::ALT | Qt::Key_Home), [this] { OpenTopic({}); });
  back->setEnabled(false);
  forward->setEnabled(false);
  connect(page_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(page_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);

  auto* space = new QWidget;
  space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  bar->addWidget(space);
  searchField_ = new QLineEdit;
  searchField_->setPlaceholderText(QtText(texts::HelpSearch));
  searchField_->setAccessibleName(QtText(texts::HelpSearch));
  searchField_->setClearButtonEnabled(true);
  searchField_->setMaximumWidth(240);
  bar->addWidget(searchField_);
  add("find", texts::HelpFindNext, QKeySequence(Qt::Key_F3), [this] { FindNext(searchField_->text()); });
  connect(searchField_, &QLineEdit::returnPressed, this, [this] { FindNext(searchField_->text()); });

  const auto key = [this](const QKeySequence& keys, auto act) {
    auto* action = new QAction(this);
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, act);
    addAction(action);
  };
  key(QKeySequence(Qt::CTRL | Qt::Key_F), [this] {
    searchField_->setFocus();
    searchField_->selectAll();
  });
  key(QKeySequence(Qt::SHIFT | Qt::Key_F3), [this] { FindNext(searchField_->text(), true); });
  key(QKeySequence(Qt::Key_Escape), [this] { close(); });
}

// Headings and tables take their colours from the palette, so that the pages are legible in every appearance.
void HelpWindow::ApplyColours() {
  QFile file(QStringLiteral(":/help/hilfe.css"));
  if (!file.open(QIODevice::ReadOnly)) return;
  QString sheet = QString::fromUtf8(file.readAll());
  sheet.replace(QLatin1String("@accent"), palette().color(QPalette::Link).name());
  sheet.replace(QLatin1String("@soft"), palette().color(QPalette::AlternateBase).name());
  sheet.replace(QLatin1String("@muted"), palette().color(QPalette::PlaceholderText).name());
  page_->document()->setDefaultStyleSheet(sheet);
  if (!page_->source().isEmpty()) page_->reload();
}

void HelpWindow::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange && searchField_ != nullptr) ApplyColours();
  QMainWindow::changeEvent(event);
}

// In a narrow window the page goes before the contents, which are a page, too.
void HelpWindow::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  contents_->setVisible(width() >= kNarrow);
}

void HelpWindow::OpenTopic(const QString& topic) {
  QUrl url = PageUrl(HelpPage(topic));
  if (topic.contains('#')) url.setFragment(topic.section('#', 1));
  page_->setSource(url);
  if (QWidget* const dialog = QApplication::activeModalWidget(); dialog != nullptr && !isVisible()) {
    const HelpPlace place =
        PlaceBeside(dialog->frameGeometry(), dialog->screen()->availableGeometry(), size());
    if (place.dialog != dialog->pos()) dialog->move(place.dialog);
    setGeometry(place.help);
  }
  show();
  StandBeforeDialogs();
  raise();
  activateWindow();
}

// A dialog that waits for an answer locks all windows but those that belong to it.
void HelpWindow::StandBeforeDialogs() {
  QWindow* const own = windowHandle();
  QWindow* const dialog = QGuiApplication::modalWindow();
  if (own != nullptr && own != dialog && own->transientParent() != dialog) own->setTransientParent(dialog);
}

QString HelpWindow::CurrentTopic() const {
  return page_->source().fileName();
}

// The line of the contents follows the page, however it was reached.
void HelpWindow::FollowPage() {
  setWindowTitle(page_->documentTitle().isEmpty()
                     ? QtText(texts::HelpCaption)
                     : QStringLiteral("%1 - %2").arg(page_->documentTitle(), QtText(texts::HelpCaption)));
  statusBar()->clearMessage();
  const QSignalBlocker quiet(contents_);
  contents_->setCurrentItem(nullptr);
  for (QTreeWidgetItemIterator item(contents_); *item != nullptr; ++item) {
    if ((*item)->data(0, kTopicRole).toString().compare(CurrentTopic(), Qt::CaseInsensitive) != 0) continue;
    contents_->setCurrentItem(*item);
    return;
  }
}

bool HelpWindow::FindNext(const QString& text, bool backward) {
  if (text.isEmpty()) return false;
  const QTextDocument::FindFlags flags = backward ? QTextDocument::FindBackward : QTextDocument::FindFlags();
  bool found = page_->find(text, flags);
  if (!found) {
    QTextCursor around = page_->textCursor();
    around.movePosition(backward ? QTextCursor::End : QTextCursor::Start);
    const QTextCursor before = page_->textCursor();
    page_->setTextCursor(around);
    found = page_->find(text, flags);
    if (!found) page_->setTextCursor(before);
  }
  if (found) {
    statusBar()->clearMessage();
  } else {
    statusBar()->showMessage(ToQt(Format(Text(texts::HelpNotFound), FromQt(text))));
  }
  return found;
}

}  // namespace ts5
