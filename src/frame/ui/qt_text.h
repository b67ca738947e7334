// Between the UTF-8 texts of the logic and the texts of the windows.
#pragma once

#include <QString>
#include <string>
#include <string_view>

#include "platform/base/strings.h"

namespace ts5 {

[[nodiscard]] inline QString ToQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
[[nodiscard]] inline std::string FromQt(const QString& text) {
  return text.toStdString();
}
[[nodiscard]] inline QString QtText(TextId id) {
  return ToQt(Text(id));
}

}  // namespace ts5
