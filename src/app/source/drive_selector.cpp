#include "app/source/drive_selector.h"

#include <QAbstractItemView>
#include <QFocusEvent>
#include <QKeyEvent>

#include "app/texts.h"
#include "frame/file_list.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"

namespace ts5 {

DriveSelector::DriveSelector(QWidget* parent) : QComboBox(parent) {
  setObjectName("driveSelector");
  setAccessibleName(QtText(texts::DriveSelectorName));
  setToolTip(QtText(texts::HintTakeDrive));
  setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
  setMinimumContentsLength(24);
  connect(this, &QComboBox::activated, this, [this] {
    if (!browsing_) Take();
  });
}

void DriveSelector::SetDrives(const std::vector<Drive>& drives) {
  const QSignalBlocker quiet(this);
  clear();
  addItem(Icon("filesicon"), QtText(texts::ListModeDrive), kListModeDrive);
  for (const Drive& drive : drives) addItem(Icon("diskicon"), drive.text, drive.index);
  SetCurrent(current_);
}

void DriveSelector::SetCurrent(std::int32_t index) {
  current_ = index;
  setCurrentIndex(findData(index));
}

void DriveSelector::Take() {
  emit DriveTaken(currentData().toInt());
}

void DriveSelector::keyPressEvent(QKeyEvent* event) {
  if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
      event->modifiers() == Qt::NoModifier) {
    Take();
    return;
  }
  browsing_ = true;
  QComboBox::keyPressEvent(event);
  browsing_ = false;
}

// A turn of the wheel over the list must not change the source.
void DriveSelector::wheelEvent(QWheelEvent* event) {
  event->ignore();
}

void DriveSelector::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
    SetCurrent(current_);
  QComboBox::focusOutEvent(event);
}

}  // namespace ts5
