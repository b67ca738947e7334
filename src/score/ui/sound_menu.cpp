#include "score/ui/sound_menu.h"

#include <QMenu>

#include "frame/ui/qt_text.h"
#include "score/texts.h"

namespace ts5 {
namespace {

constexpr int kFamilies = 16;
constexpr int kFamilySize = 8;

QString TextAt(int number) {
  return ToQt(TextByNumber(number).value_or(std::string_view{}));
}

}  // namespace

QString SoundName(std::uint8_t program) {
  return TextAt(kSoundCommand + program);
}

std::unique_ptr<QMenu> SoundMenu(std::uint8_t current) {
  auto menu = std::make_unique<QMenu>();
  for (int family = 0; family < kFamilies; ++family) {
    QMenu* const part = menu->addMenu(TextAt(static_cast<int>(texts::SoundFamily01) + family));
    for (int i = 0; i < kFamilySize; ++i) {
      const int program = family * kFamilySize + i;
      QAction* const action = part->addAction(SoundName(static_cast<std::uint8_t>(program)));
      action->setData(kSoundCommand + program);
      action->setCheckable(true);
      action->setChecked(program == current);
    }
    if (current / kFamilySize == family) {
      QFont font = part->menuAction()->font();
      font.setBold(true);
      part->menuAction()->setFont(font);
    }
  }
  return menu;
}

}  // namespace ts5
