#include "frame/ui/print_preview_dialog.h"

#include <QAbstractScrollArea>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <utility>

#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_PRINTPREVIEW.h"

namespace ts5 {

PrintPreviewDialog::PrintPreviewDialog(const QPageLayout& layout, PrintDrawing drawing, QString helpTopic,
                                       DialogHost& host, QWidget* parent)
    : HostedDialog(host, {}, parent),
      drawing_(std::move(drawing)),
      helpTopic_(std::move(helpTopic)),
      printer_(std::make_unique<QPrinter>(QPrinter::HighResolution)),
      ui_(std::make_unique<Ui::PRINTPREVIEW>()) {
  printer_->setOutputFormat(QPrinter::PdfFormat);  // no printer is asked
  printer_->setPageLayout(layout);
  ui_->setupUi(this);
  ConnectButtons();
  auto* const preview = new QPrintPreviewWidget(printer_.get(), this);
  for (QAbstractScrollArea* view : preview->findChildren<QAbstractScrollArea*>())
    view->setAccessibleName(windowTitle());
  ui_->previewLayout->addWidget(preview);
  connect(preview, &QPrintPreviewWidget::paintRequested, this, [this](QPrinter* printer) {
    PrintJob job;
    job.mostPages = kMostPages;
    job.proceed = [this](int /*page*/, int pages) {
      pages_ = pages;
      return true;
    };
    (void)drawing_(*printer, job);
  });
  connect(preview, &QPrintPreviewWidget::previewChanged, this, &PrintPreviewDialog::ShowPage);
  const auto goTo = [this, preview](int page) {
    preview->setCurrentPage(page);
    ShowPage();
  };
  connect(ui_->firstButton, &QToolButton::clicked, preview, [goTo] { goTo(1); });
  connect(ui_->previousButton, &QToolButton::clicked, preview,
          [goTo, preview] { goTo(preview->currentPage() - 1); });
  connect(ui_->nextButton, &QToolButton::clicked, preview,
          [goTo, preview] { goTo(preview->currentPage() + 1); });
  connect(ui_->lastButton, &QToolButton::clicked, preview, [goTo, preview] { goTo(preview->pageCount()); });
  connect(ui_->wholePageButton, &QToolButton::clicked, preview, &QPrintPreviewWidget::fitInView);
  connect(ui_->pageWidthButton, &QToolButton::clicked, preview, &QPrintPreviewWidget::fitToWidth);
  connect(ui_->printButton, &QPushButton::clicked, this, &QDialog::accept);
  preview->setObjectName(QStringLiteral("preview"));
  preview->updatePreview();
}

PrintPreviewDialog::~PrintPreviewDialog() = default;

void PrintPreviewDialog::ShowPage() {
  const auto* preview = findChild<QPrintPreviewWidget*>(QStringLiteral("preview"));
  if (preview == nullptr) return;
  QString text = ToQt(Format(Text(texts::PreviewPageOf), preview->currentPage(), pages_));
  if (pages_ > kMostPages) text += "  " + ToQt(Format(Text(texts::PreviewCut), kMostPages));
  ui_->pageLabel->setText(text);
  ui_->firstButton->setEnabled(preview->currentPage() > 1);
  ui_->previousButton->setEnabled(preview->currentPage() > 1);
  ui_->nextButton->setEnabled(preview->currentPage() < preview->pageCount());
  ui_->lastButton->setEnabled(preview->currentPage() < preview->pageCount());
}

QString PrintPreviewDialog::HelpTopic() const {
  return helpTopic_;
}

}  // namespace ts5
