#include "app/look/house_style.h"

#include <QAbstractItemView>
#include <QIcon>
#include <QPainter>
#include <QStyleOption>
#include <QWidget>
#include <algorithm>
#include <iterator>
#include <string_view>

#include "resources/icons.h"

namespace ts5 {
namespace {

constexpr int kSignSize = 48;
constexpr int kMoreExtent = 24;  // of the button with what a bar has no room for

struct Sign {
  QStyle::StandardPixmap place;
  std::string_view icon;
};
constexpr Sign kSigns[] = {
    {QStyle::SP_MessageBoxInformation, "about"},
    {QStyle::SP_MessageBoxQuestion, "help"},
    {QStyle::SP_MessageBoxWarning, "warning"},
    {QStyle::SP_MessageBoxCritical, "warning"},
    {QStyle::SP_ToolBarHorizontalExtensionButton, "more"},
    {QStyle::SP_DirIcon, "closeddiricon"},
    {QStyle::SP_ArrowBack, "back"},
    {QStyle::SP_ArrowForward, "forward"},
    {QStyle::SP_FileDialogToParent, "up"},
    {QStyle::SP_FileDialogNewFolder, "newfolder"},
    {QStyle::SP_FileDialogListView, "listview"},
    {QStyle::SP_FileDialogDetailedView, "detailview"},
};

// "" for signs that the toolkit draws.
std::string_view SignOf(QStyle::StandardPixmap place) {
  const auto* const found = std::ranges::find(kSigns, place, &Sign::place);
  return found == std::end(kSigns) ? std::string_view() : found->icon;
}

}  // namespace

HouseStyle::HouseStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

int HouseStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* answer) const {
  // The list of a combo box drops below it: laid over it, it does not reckon with the frame of the style
  // sheet and cuts its last line.
  if (hint == SH_DialogButtonBox_ButtonsHaveIcons || hint == SH_ComboBox_Popup) return 0;
  return QProxyStyle::styleHint(hint, option, widget, answer);
}

int HouseStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
  if (metric == PM_ToolBarExtensionExtent) return kMoreExtent;
  return QProxyStyle::pixelMetric(metric, option, widget);
}

void HouseStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
  const auto* const focus = qstyleoption_cast<const QStyleOptionFocusRect*>(option);
  if (element == PE_FrameFocusRect && focus != nullptr &&
      (widget == nullptr || qobject_cast<const QAbstractItemView*>(widget) != nullptr)) {
    // The toolkit's lies over the text of a row like a veil.
    const bool chosen = focus->backgroundColor == focus->palette.color(QPalette::Highlight);
    painter->setPen(focus->palette.color(chosen ? QPalette::HighlightedText : QPalette::Highlight));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(focus->rect.adjusted(0, 0, -1, -1));
    return;
  }
  const auto* const item = qstyleoption_cast<const QStyleOptionViewItem*>(option);
  if (element != PE_IndicatorItemViewItemCheck || item == nullptr || widget == nullptr)
    return QProxyStyle::drawPrimitive(element, option, painter, widget);
  // On a selected row the mark would have the colour of its text, in a box that stays as light as ever.
  QStyleOptionViewItem visible(*item);
  for (const auto group : {QPalette::Active, QPalette::Inactive})
    visible.palette.setColor(group, QPalette::Text, widget->palette().color(group, QPalette::Text));
  QProxyStyle::drawPrimitive(element, &visible, painter, widget);
}

QIcon HouseStyle::standardIcon(StandardPixmap sign, const QStyleOption* option, const QWidget* widget) const {
  const std::string_view own = SignOf(sign);
  return own.empty() ? QProxyStyle::standardIcon(sign, option, widget) : Icon(own);
}

QPixmap HouseStyle::standardPixmap(StandardPixmap sign, const QStyleOption* option,
                                   const QWidget* widget) const {
  const std::string_view own = SignOf(sign);
  return own.empty() ? QProxyStyle::standardPixmap(sign, option, widget) : Icon(own).pixmap(kSignSize);
}

}  // namespace ts5
