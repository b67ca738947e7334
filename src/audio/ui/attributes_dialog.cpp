#include "audio/ui/attributes_dialog.h"

#include <QProgressDialog>
#include <QTabWidget>
#include <utility>

#include "audio/audio_file_info.h"
#include "audio/tags/tag_file.h"
#include "audio/texts.h"
#include "audio/ui/attribute_page.h"
#include "audio/ui/audio_property_list.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "ui_AUDIOPROPS.h"

namespace ts5 {
namespace {

constexpr int kProgressDelay = 500;  // milliseconds

tags::AttributeForm FormOfFiles(const std::vector<std::string>& files) {
  std::vector<tags::Attributes> lists;
  for (const std::string& file : files)
    lists.push_back(tags::ReadAttributes(file).value_or(tags::Attributes()));
  return tags::AttributeForm(std::span<const tags::Attributes>(lists));
}

// What the file says and does not let change, behind what is known of it anyway.
std::vector<PropertyRow> WithHeader(std::vector<PropertyRow> rows, const std::vector<std::string>& files) {
  if (files.size() != 1) return rows;
  const auto attributes = tags::ReadAttributes(files.front());
  for (const tags::Attribute& attribute : attributes ? *attributes : tags::Attributes()) {
    if (attribute.readOnly) rows.push_back({attribute.name, tags::DisplayValue(attribute)});
  }
  return rows;
}

}  // namespace

AttributesDialog::AttributesDialog(const AudioProperties& properties, const std::string& measured,
                                   std::vector<std::string> files, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::AttributesPrompt), parent),
      ui_(std::make_unique<Ui::AUDIOPROPS>()),
      page_(new AttributePage(FormOfFiles(files))),
      files_(std::move(files)) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(ToQt(properties.title));
  new AudioPropertyList(*ui_->propertyList, WithHeader(properties.rows, files_), measured);
  ui_->pages->addTab(page_, page_->windowTitle());
}

AttributesDialog::AttributesDialog(const tags::Attributes& job, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::AttributesPrompt), parent),
      ui_(std::make_unique<Ui::AUDIOPROPS>()),
      page_(new AttributePage(tags::AttributeForm(job))) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(QtText(texts::AttributesOfJob));
  ui_->pages->removeTab(0);
  ui_->pages->addTab(page_, page_->windowTitle());
  page_->setFocus();
}

AttributesDialog::~AttributesDialog() = default;

QString AttributesDialog::HelpTopic() const {
  return QStringLiteral("audio-attribute.htm");
}

tags::Attributes AttributesDialog::JobAttributes() const {
  return page_->Form().JobAttributes();
}

void AttributesDialog::Commit() {
  page_->CommitEditor();
  if (page_->Form().HasUnselectedValues() &&
      !AskYesNo(this, texts::AttributesAskUnselected, DefaultButton::No))
    return;
  if (files_.empty() || WriteFiles()) accept();
}

bool AttributesDialog::WriteFiles() {
  const tags::AttributeChanges changes = page_->Form().Changes();
  if (changes.Empty()) return true;
  QProgressDialog progress(QtText(texts::AttributesSaving), QtText(texts::AttributesStop), 0,
                           static_cast<int>(files_.size()), this);
  progress.setWindowTitle(QtText(texts::ApplicationTitle));
  progress.setWindowModality(Qt::WindowModal);
  progress.setMinimumDuration(kProgressDelay);
  std::size_t failed = 0;
  std::string troubles;
  bool stopped = false;
  for (std::size_t i = 0; i < files_.size() && !stopped; ++i) {
    progress.setValue(static_cast<int>(i));
    stopped = progress.wasCanceled();
    if (stopped) break;
    const auto changed = tags::ChangeAttributes(files_[i], changes, id3Version_);
    if (changed) {
      failed += *changed;
    } else {
      troubles += Format(Text(texts::AttributesFileFailed), FileNameOf(files_[i])) + "\n";
    }
  }
  progress.reset();
  if (failed > 0) troubles += Format(Text(texts::AttributesNotSaved), failed);
  if (!troubles.empty()) ShowWarning(this, ToQt(Trim(troubles)));
  return !stopped;
}

std::optional<tags::Attributes> EditJobAttributes(const tags::Attributes& job, DialogHost& host,
                                                  QWidget* owner) {
  AttributesDialog dialog(job, host, owner);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.JobAttributes();
}

}  // namespace ts5
