#include "app/source/disc_fill.h"

#include <QStyle>
#include <algorithm>

#include "app/texts.h"
#include "frame/file_view.h"
#include "frame/ui/qt_text.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kUsualDisc = 79 * 60 + 57;  // seconds, of a blank CD-R 80

}  // namespace

DiscFill::DiscFill(QWidget* parent) : QProgressBar(parent) {
  setObjectName("discFill");
  setAccessibleName(QtText(texts::DiscFillName));
  setToolTip(QtText(texts::DiscFillTip));
  setTextVisible(true);
  setAlignment(Qt::AlignCenter);
  ShowProject(0, std::nullopt);
}

void DiscFill::ShowProject(std::uint64_t project, std::optional<std::uint32_t> free) {
  const auto length = ClampTo<std::uint32_t>(project);
  const std::uint32_t room = free.value_or(kUsualDisc);
  fits_ = length <= room;
  setRange(0, static_cast<int>(room));
  setValue(static_cast<int>(std::min(length, room)));
  QString text;
  if (!fits_) {
    text = ToQt(Format(Text(texts::DiscFillOver), TimeText(length), TimeText(length - room), TimeText(room)));
  } else {
    text = ToQt(
        Format(Text(free ? texts::DiscFillFits : texts::DiscFillNoDisc), TimeText(length), TimeText(room)));
  }
  setFormat(text);
  setAccessibleDescription(text);
  if (property("over").toBool() == !fits_) return;
  setProperty("over", !fits_);
  style()->unpolish(this);
  style()->polish(this);
}

}  // namespace ts5
