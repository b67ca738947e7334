#include "audio/encode/ui/target_names_dialog.h"

#include <QHeaderView>
#include <QMenu>
#include <utility>

#include "audio/encode/texts.h"
#include "audio/tags/name_pattern.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "ui_TARGETNAMES.h"

namespace ts5::encode {
namespace {

constexpr int kPause = 150;  // milliseconds

QString ShownName(const NamedItem& item) {
  if (Failed(item.target.code)) return QtText(texts::NamesNoTarget);
  const std::string name(FileNameOf(item.target.name));
  return ToQt(item.replaces ? Format(Text(texts::NamesReplaced), name) : name);
}

}  // namespace

TargetNamesDialog::TargetNamesDialog(const std::string& pattern, NamePreview preview, DialogHost& host,
                                     QWidget* parent)
    : HostedDialog(host, QtText(texts::NamesPrompt), parent),
      preview_(std::move(preview)),
      ui_(std::make_unique<Ui::TARGETNAMES>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->patternEdit->setText(ToQt(pattern));
  auto* const words = new QMenu(ui_->wordButton);
  for (const tags::NameWord& word : tags::NameWords()) {
    const QString text = QLatin1Char('%') + ToQt(word.word) + QLatin1Char('%');
    words->addAction(text, this, [this, text] {
      ui_->patternEdit->insert(text);
      ui_->patternEdit->setFocus();
    });
  }
  ui_->wordButton->setMenu(words);
  ui_->nameList->header()->setSectionResizeMode(QHeaderView::Stretch);
  pause_.setSingleShot(true);
  pause_.setInterval(kPause);
  connect(&pause_, &QTimer::timeout, this, [this] { ShowNames(); });
  connect(ui_->patternEdit, &QLineEdit::textChanged, &pause_, qOverload<>(&QTimer::start));
  ShowNames();
}

TargetNamesDialog::~TargetNamesDialog() = default;

QString TargetNamesDialog::HelpTopic() const {
  return QStringLiteral("zieldateinamen.htm");
}

std::string TargetNamesDialog::Pattern() const {
  return std::string(Trim(FromQt(ui_->patternEdit->text())));
}

void TargetNamesDialog::ShowNames() {
  const auto fault = tags::NamePatternFault(Pattern());
  ui_->nameList->clear();
  ui_->nameList->setEnabled(!fault);
  ui_->faultLabel->setVisible(fault.has_value());
  if (fault) return ui_->faultLabel->setText(QtText(*fault));
  for (const NamedItem& item : preview_(Pattern())) {
    auto* const row = new QTreeWidgetItem(ui_->nameList, {ToQt(FileNameOf(item.source)), ShownName(item)});
    row->setToolTip(0, ToQt(item.source).toHtmlEscaped());
    row->setToolTip(1, ToQt(item.target.name).toHtmlEscaped());
  }
  if (ui_->nameList->topLevelItemCount() == 0)
    (new QTreeWidgetItem(ui_->nameList, {QtText(texts::NamesNone)}))->setFlags(Qt::NoItemFlags);
}

void TargetNamesDialog::Commit() {
  if (const auto fault = tags::NamePatternFault(Pattern())) {
    ShowNotice(this, *fault);
    ui_->patternEdit->setFocus();
    ui_->patternEdit->selectAll();
    return;
  }
  accept();
}

}  // namespace ts5::encode
