#include "artworker/ui/artworker_window.h"

#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QHideEvent>
#include <QMenu>
#include <QScreen>
#include <QScrollArea>
#include <QShortcut>
#include <QSignalBlocker>
#include <QToolBar>
#include <algorithm>
#include <utility>

#include "artworker/texts.h"
#include "artworker/ui/canvas_accessible.h"
#include "artworker/ui/canvas_page.h"
#include "artworker/ui/element_clipboard.h"
#include "artworker/ui/element_commands.h"
#include "artworker/ui/help_topics.h"
#include "artworker/ui/layout_canvas.h"
#include "artworker/ui/layout_files.h"
#include "artworker/ui/layout_page.h"
#include "artworker/ui/options_page.h"
#include "artworker/ui/place_bar.h"
#include "artworker/ui/sheets_dialog.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_ARTWORKERPARAMS.h"

namespace ts5::artworker {
namespace {

constexpr QSize kUsualSize{1024, 690};
constexpr int kBarIcon = 18;

using C = EditorCommand;
constexpr std::array kTools = {C::Move,    C::Design,     C::ZoomIn,  C::ZoomOut,
                               C::NewText, C::NewEllipse, C::NewImage};

// On small screens the page scrolls, instead of the window with all its bars.
QScrollArea* Scrolling(QWidget* page) {
  auto* const area = new QScrollArea(page->parentWidget());
  area->setWidgetResizable(true);
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::NoFocus);
  area->setWidget(page);
  return area;
}

}  // namespace

ArtworkerWindow::ArtworkerWindow(Subject subject, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::ArtworkerPrompt), parent),
      subject_(std::move(subject)),
      ui_(std::make_unique<Ui::ARTWORKERPARAMS>()),
      scene_{LayoutEditor(subject_.parameters()->layout,
                          static_cast<std::size_t>(subject_.parameters()->undoSteps)),
             BackgroundList(subject_.backgrounds)} {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowFlags(windowFlags() | Qt::WindowMinMaxButtonsHint);
  setWindowTitle(ToQt(Format(Text(texts::ArtworkerCaption), subject_.title)));
  ui_->hintLabel->setText(QtText(texts::ArtworkerPrompt));
  scene_.facts = subject_.facts();
  scene_.boundaries = subject_.parameters()->printBorder;
  scene_.backgrounds.onRemoved = [this](std::size_t removed) {
    scene_.editor.Rewrite([removed](ArtworkLayout& layout) {
      MapBackgrounds(layout, [removed](std::int32_t index) { return IndexWithout(index, removed); });
    });
    TakeEdit();
  };
  MakeCommands();
  BuildPages();
  BuildBars();
  connect(ui_->printButton, &QAbstractButton::clicked, this, [this] { subject_.print(); });
  connect(ui_->closeButton, &QAbstractButton::clicked, this, [this] { close(); });
  connect(ui_->pages, &QTabWidget::currentChanged, this, [this] {
    scene_.editor.Select({});
    if (auto* const parameters = subject_.parameters()) optionsPage_->Show(*parameters, scene_.guides);
    Refresh();
    if (Canvas() != nullptr) Canvas()->setFocus();
  });
  connect(QApplication::clipboard(), &QClipboard::dataChanged, this, [this] { UpdateActions(); });
  for (QPushButton* button : findChildren<QPushButton*>()) button->setAutoDefault(false);  // Enter edits
  RestorePlace();
  TakeOptions();
  SetTool(Tool::Design);
  Refresh();
  pages_.front()->Canvas().setFocus();
}

ArtworkerWindow::~ArtworkerWindow() = default;

QString ArtworkerWindow::HelpTopic() const {
  return kHelpEditor;
}

// --- building

void ArtworkerWindow::MakeCommands() {
  files_ =
      std::make_unique<LayoutFiles>(scene_, Host(), this, subject_.folder, subject_.parameters()->fileName);
  elements_ = std::make_unique<ElementCommands>(
      ElementCommands::Ground{.scene = scene_,
                              .host = Host(),
                              .window = this,
                              .page = [this] { return Page(); },
                              .pictureFolder = [this] { return files_->PictureFolder(); },
                              .folder = subject_.folder});
  connect(elements_.get(), &ElementCommands::Edited, this, [this] { TakeEdit(); });
  connect(files_.get(), &LayoutFiles::Edited, this, [this] { TakeEdit(); });
  connect(files_.get(), &LayoutFiles::FileChanged, this, [this] {
    if (auto* const parameters = subject_.parameters()) parameters->fileName = files_->File();
    layoutPage_->ShowFile(files_->File());
  });
  connect(files_.get(), &LayoutFiles::Begun, this, [this] {
    if (Canvas() == nullptr) ui_->pages->setCurrentWidget(ui_->labelPage);
  });
}

void ArtworkerWindow::BuildPages() {
  InstallCanvasAccessibility();
  const std::array layouts = {ui_->labelLayout, ui_->inlayLayout, ui_->bookletLayout};
  for (const ArtworkObjectId id : kObjectIds) {
    auto* const page = new CanvasPage(scene_, id, this);
    pages_[IndexOf(id)] = page;
    layouts[IndexOf(id)]->setContentsMargins(0, 0, 0, 0);
    layouts[IndexOf(id)]->addWidget(page);
    LayoutCanvas* const canvas = &page->Canvas();
    connect(canvas, &LayoutCanvas::Edited, this, [this] { TakeEdit(); });
    connect(canvas, &LayoutCanvas::SelectionChanged, this, [this] { Refresh(); });
    connect(canvas, &LayoutCanvas::ElementOpened, elements_.get(), &ElementCommands::Edit);
    connect(canvas, &LayoutCanvas::Drawn, elements_.get(), &ElementCommands::Draw);
    connect(canvas, &LayoutCanvas::ToolWanted, this, [this](Tool tool) { SetTool(tool); });
    connect(canvas, &LayoutCanvas::Zoomed, this, [this] { UpdateActions(); });
    connect(canvas, &LayoutCanvas::MenuWanted, this, [this](const QPoint& global) { ShowMenu(global); });
  }
  layoutPage_ = new LayoutPage(scene_, this);
  layoutPage_->ShowFile(files_->File());
  ui_->layoutLayout->addWidget(Scrolling(layoutPage_));
  connect(layoutPage_, &LayoutPage::Edited, this, [this] { TakeEdit(); });
  connect(layoutPage_, &LayoutPage::TemplateWanted, files_.get(), &LayoutFiles::BeginFromTemplate);
  connect(layoutPage_, &LayoutPage::LoadWanted, files_.get(), &LayoutFiles::Load);
  connect(layoutPage_, &LayoutPage::SaveWanted, files_.get(), &LayoutFiles::Save);
  optionsPage_ = new OptionsPage(subject_.printers, this);
  optionsPage_->Show(*subject_.parameters(), scene_.guides);
  ui_->optionsLayout->addWidget(Scrolling(optionsPage_));
  connect(optionsPage_, &OptionsPage::Changed, this, [this] {
    TakeOptions();
    subject_.edited();
    subject_.printerChosen();
  });
  connect(optionsPage_, &OptionsPage::UndoStepsChosen, this, [this](int steps) { TakeUndoSteps(steps); });
  connect(optionsPage_, &OptionsPage::SheetsWanted, this, [this] { ChooseSheets(); });
  connect(optionsPage_, &OptionsPage::FitWanted, this, [this] { FitPrinter(); });
  placeBar_ = new PlaceBar(scene_, this);
  ui_->placeLayout->addWidget(placeBar_);
  connect(placeBar_, &PlaceBar::Edited, this, [this] { TakeEdit(); });
}

void ArtworkerWindow::BuildBars() {
  std::array<QWidget*, kObjectCount> canvases{};
  for (std::size_t i = 0; i < kObjectCount; ++i) canvases[i] = &pages_[i]->Canvas();
  actions_ =
      std::make_unique<EditorActions>(*this, canvases, [this](EditorCommand command) { Act(command); });
  auto* const bar = new QToolBar(this);
  bar->setIconSize({kBarIcon, kBarIcon});
  actions_->AddToBar(*bar);
  ui_->barsLayout->addWidget(bar);
  // Some controls keep the keys that lead from page to page for themselves.
  QTabWidget* const pages = ui_->pages;
  for (const auto& [key, step] : {std::pair(Qt::CTRL | Qt::Key_Tab, 1),
                                  std::pair(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab, pages->count() - 1)}) {
    auto* const shortcut = new QShortcut(QKeySequence(key), this);
    connect(shortcut, &QShortcut::activated, pages, [pages, step = step] {
      pages->setCurrentIndex((pages->currentIndex() + step) % pages->count());
    });
  }
}

void ArtworkerWindow::RestorePlace() {
  const auto& place = subject_.parameters()->place;
  const QRect rect(QPoint(place[0], place[1]), QPoint(place[2], place[3]));
  const QScreen* const screen = QGuiApplication::screenAt(rect.center());
  if (place[0] < 0 || screen == nullptr || rect.width() < minimumSizeHint().width()) {
    resize(kUsualSize);
  } else {
    setGeometry(rect.intersected(screen->availableGeometry()));
  }
}

void ArtworkerWindow::StorePlace() {
  auto* const parameters = subject_.parameters();
  if (parameters == nullptr) return;
  const QRect rect = normalGeometry().isValid() ? normalGeometry() : geometry();
  parameters->place = {rect.left(), rect.top(), rect.right(), rect.bottom()};
}

// At once, as the jobs may be stored while the window is open.
void ArtworkerWindow::moveEvent(QMoveEvent* event) {
  HostedDialog::moveEvent(event);
  if (isVisible()) StorePlace();
}

void ArtworkerWindow::resizeEvent(QResizeEvent* event) {
  HostedDialog::resizeEvent(event);
  if (isVisible()) StorePlace();
}

void ArtworkerWindow::hideEvent(QHideEvent* event) {
  if (!event->spontaneous()) StorePlace();
  HostedDialog::hideEvent(event);
}

void ArtworkerWindow::changeEvent(QEvent* event) {
  // Another window may have changed the backgrounds or the list of titles.
  if (event->type() == QEvent::ActivationChange && isActiveWindow() && actions_ != nullptr) {
    scene_.backgrounds.Reload();
    scene_.facts = subject_.facts();
    Refresh();
  }
  // A run that locked the window gives back where the keys go.
  if (event->type() == QEvent::EnabledChange && isEnabled() && actions_ != nullptr && Canvas() != nullptr)
    Canvas()->setFocus();
  HostedDialog::changeEvent(event);
}

// --- state

LayoutCanvas& ArtworkerWindow::CanvasOf(ArtworkObjectId id) {
  return pages_[IndexOf(id)]->Canvas();
}

CanvasPage* ArtworkerWindow::Page() {
  const int page = ui_->pages->currentIndex();
  return std::cmp_less(page, pages_.size()) ? pages_[static_cast<std::size_t>(page)] : nullptr;
}

LayoutCanvas* ArtworkerWindow::Canvas() {
  return Page() != nullptr ? &Page()->Canvas() : nullptr;
}

void ArtworkerWindow::TakeEdit() {
  if (auto* const parameters = subject_.parameters()) parameters->layout = scene_.editor.Layout();
  subject_.edited();
  Refresh();
}

void ArtworkerWindow::Refresh() {
  const LayoutCanvas* const canvas = Canvas();
  Selection selection = scene_.editor.Selected();
  std::erase_if(selection, [&](std::size_t index) {
    return canvas == nullptr || scene_.editor.Layout().elements[index].object != canvas->Id();
  });
  scene_.editor.Select(std::move(selection));
  for (CanvasPage* page : pages_) {
    if (page->isVisible()) page->Refresh();
  }
  layoutPage_->Refresh();
  placeBar_->setVisible(canvas != nullptr);
  placeBar_->Refresh();
  UpdateActions();
}

void ArtworkerWindow::UpdateActions() {
  if (actions_ == nullptr) return;
  EditorActions& actions = *actions_;
  LayoutCanvas* const canvas = Canvas();
  const ArtworkLayout& layout = scene_.editor.Layout();
  const Selection& selection = scene_.editor.Selected();
  const bool any = canvas != nullptr && !ElementsOf(layout, canvas->Id()).empty();
  const bool image =
      selection.size() == 1 && std::holds_alternative<Image>(layout.elements[selection.front()].content);
  for (const EditorCommand tool : kTools) actions[tool].setEnabled(canvas != nullptr);
  for (const CommandRow& row : CommandRows()) {
    if (row.place == CommandPlace::Element || row.place == CommandPlace::Arrange)
      actions[row.command].setEnabled(!selection.empty());
  }
  constexpr double kSlack = 1e-6;
  actions[C::OriginalZoom].setEnabled(canvas != nullptr && std::abs(canvas->Zoom() - 1) > kSlack);
  actions[C::Edit].setEnabled(selection.size() == 1);
  actions[C::DeleteAll].setEnabled(any);
  actions[C::SelectAll].setEnabled(any);
  actions[C::OriginalSize].setEnabled(image);
  actions[C::Paste].setEnabled(canvas != nullptr && CanPaste());
  actions[C::Undo].setEnabled(scene_.editor.CanUndo());
  actions[C::Redo].setEnabled(scene_.editor.CanRedo());
  for (const EditorCommand command : {C::DistributeAcross, C::DistributeDown})
    actions[command].setEnabled(selection.size() > 2);
}

void ArtworkerWindow::SetTool(Tool tool) {
  constexpr double kSlack = 1e-6;
  if (tool == Tool::ZoomOut && Canvas() != nullptr && Canvas()->Zoom() <= LayoutCanvas::kLeastZoom + kSlack) {
    QApplication::beep();
    tool = scene_.tool == Tool::ZoomOut ? Tool::Design : scene_.tool;
  }
  scene_.tool = tool;
  (*actions_)[kTools[static_cast<std::size_t>(tool)]].setChecked(true);
  for (CanvasPage* page : pages_) page->Canvas().Refresh();
}

void ArtworkerWindow::ShowMenu(const QPoint& global) {
  QMenu menu(this);
  actions_->AddToMenu(menu);
  menu.exec(global);
}

// --- commands

void ArtworkerWindow::Act(Command command) {
  if (const auto tool = std::ranges::find(kTools, command); tool != kTools.end())
    return SetTool(static_cast<Tool>(tool - kTools.begin()));
  if (elements_->Act(command)) return;
  switch (command) {
    case C::OriginalZoom:
      if (Canvas() != nullptr) Canvas()->SetZoom(1);
      break;
    case C::LayoutPage:
      ui_->pages->setCurrentWidget(ui_->layoutPage);
      break;
    case C::Undo:
      if (scene_.editor.Undo()) TakeEdit();
      break;
    case C::Redo:
      if (scene_.editor.Redo()) TakeEdit();
      break;
    case C::Template:
      files_->BeginFromTemplate();
      break;
    case C::Load:
      files_->Load();
      break;
    case C::Save:
      files_->Save();
      break;
    default:
      break;
  }
}

// --- options

void ArtworkerWindow::TakeOptions() {
  auto* const parameters = subject_.parameters();
  if (parameters == nullptr) return;
  optionsPage_->Take(*parameters);
  scene_.guides = optionsPage_->Guides();
  scene_.boundaries = parameters->printBorder;
  for (CanvasPage* page : pages_)
    page->ShowRulers(parameters->rulers, parameters->originInMiddle, parameters->divideCentimetres);
}

void ArtworkerWindow::ChooseSheets() {
  auto* const parameters = subject_.parameters();
  if (parameters == nullptr) return;
  ArtworkerParameters shown = *parameters;
  shown.backgrounds = scene_.backgrounds.All();
  shown.disc = scene_.facts;
  SheetsDialog dialog(shown, Host(), this);
  if (dialog.exec() != QDialog::Accepted) return;
  // The window stays open beside the dialog: its job may have gone.
  if (auto* const now = subject_.parameters()) dialog.Take(*now);
}

void ArtworkerWindow::FitPrinter() {
  auto* const parameters = subject_.parameters();
  if (parameters == nullptr) return;
  const std::string printer = parameters->printer;
  FitDialog dialog(printer, subject_.fits.load(printer), Host(), this);
  if (dialog.exec() != QDialog::Accepted) return;
  if (Failed(subject_.fits.save(printer, dialog.Chosen()))) ShowWarning(this, texts::FitNotSaved);
}

void ArtworkerWindow::TakeUndoSteps(int steps) {
  auto* const parameters = subject_.parameters();
  if (parameters == nullptr) return ShowWarning(this, texts::UndoStepsFailed);
  if (subject_.running()) {
    ShowWarning(this, texts::UndoStepsBusy);
    return optionsPage_->Show(*parameters, scene_.guides);
  }
  parameters->undoSteps = steps;
  scene_.editor.SetUndoSteps(static_cast<std::size_t>(steps));
  UpdateActions();
}

}  // namespace ts5::artworker
