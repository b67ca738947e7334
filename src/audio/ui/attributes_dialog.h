// AUDIOPROPS: what audio files are and say about their music; and the attributes of a job alone.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_properties.h"
#include "audio/tags/attribute.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class AUDIOPROPS;
}

namespace ts5 {

class AttributePage;

class AttributesDialog : public HostedDialog {
  Q_OBJECT

 public:
  // Of files that can be read. properties: of the first page; measured: the file to measure, "" for none.
  AttributesDialog(const AudioProperties& properties, const std::string& measured,
                   std::vector<std::string> files, DialogHost& host, QWidget* parent);
  // Of a job: the second page alone.
  AttributesDialog(const tags::Attributes& job, DialogHost& host, QWidget* parent);
  ~AttributesDialog() override;

  [[nodiscard]] QString HelpTopic() const override;
  [[nodiscard]] tags::Attributes JobAttributes() const;

  // Of an MPEG file that gets its first ID3v2 tag: 3 or 4.
  void SetId3Version(unsigned version) { id3Version_ = version; }

 protected:
  void Commit() override;

 private:
  // False when the user stopped it.
  bool WriteFiles();

  std::unique_ptr<Ui::AUDIOPROPS> ui_;
  AttributePage* page_;
  std::vector<std::string> files_;
  unsigned id3Version_ = 3;
};

// The list after OK; nothing after Cancel.
[[nodiscard]] std::optional<tags::Attributes> EditJobAttributes(const tags::Attributes& job, DialogHost& host,
                                                                QWidget* owner);

}  // namespace ts5
