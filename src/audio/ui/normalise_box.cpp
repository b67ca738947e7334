#include "audio/ui/normalise_box.h"

#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>
#include <optional>

#include "audio/texts.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

struct ModeRow {
  TextId burner;
  TextId midiToWave;
  std::optional<TextId> hint;
  const char* name;
};
constexpr std::array<ModeRow, 3> kModes{{
    {texts::NormaliseNone, texts::NormaliseNoneMidi, std::nullopt, "normaliseNoneRadio"},
    {texts::NormaliseEach, texts::NormaliseEach, texts::NormaliseEachHint, "normaliseEachRadio"},
    {texts::NormaliseProject, texts::NormaliseProjectMidi, texts::NormaliseProjectHint,
     "normaliseProjectRadio"},
}};

}  // namespace

NormaliseBox::NormaliseBox(Wording wording, QWidget* parent)
    : QGroupBox(QtText(texts::NormaliseGroup).trimmed(), parent), hint_(new QLabel(this)) {
  auto* const layout = new QVBoxLayout(this);
  for (std::size_t i = 0; i < kModes.size(); ++i) {
    const ModeRow& row = kModes.at(i);
    auto* const button =
        new QRadioButton(QtText(wording == Wording::Burner ? row.burner : row.midiToWave), this);
    button->setObjectName(QLatin1String(row.name));
    connect(button, &QAbstractButton::toggled, this, [this](bool on) {
      if (!on) return;
      ShowHint();
      emit ModeChanged();
    });
    layout->addWidget(button);
    buttons_.at(i) = button;
  }
  hint_->setObjectName(QStringLiteral("normaliseHint"));
  hint_->setWordWrap(true);
  hint_->setMinimumHeight(hint_->fontMetrics().lineSpacing() * 4);
  hint_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  layout->addWidget(hint_);
  SetMode(NormaliseMode::None);
}

NormaliseMode NormaliseBox::Mode() const {
  for (std::size_t i = 0; i < buttons_.size(); ++i) {
    if (buttons_.at(i)->isChecked()) return static_cast<NormaliseMode>(i);
  }
  return NormaliseMode::None;
}

void NormaliseBox::SetMode(NormaliseMode mode) {
  buttons_.at(static_cast<std::size_t>(mode))->setChecked(true);
}

void NormaliseBox::SetProjectAllowed(bool allowed) {
  if (!allowed && Mode() == NormaliseMode::Project) SetMode(NormaliseMode::Each);
  buttons_.at(static_cast<std::size_t>(NormaliseMode::Project))->setEnabled(allowed);
}

void NormaliseBox::ShowHint() {
  const ModeRow& row = kModes.at(static_cast<std::size_t>(Mode()));
  hint_->setText(row.hint ? QtText(*row.hint) : QString());
}

}  // namespace ts5
