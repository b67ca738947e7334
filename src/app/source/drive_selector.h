// The drive selector of the source area. A drive is taken when it is picked from the open list, or with Enter
// after the arrow keys went through the drives; leaving without Enter goes back to the drive that is in use.
#pragma once

#include <QComboBox>
#include <cstdint>
#include <vector>

namespace ts5 {

class DriveSelector : public QComboBox {
  Q_OBJECT

 public:
  struct Drive {
    std::int32_t index = 0;  // kListModeDrive: the free file list
    QString text;
  };

  explicit DriveSelector(QWidget* parent = nullptr);

  // The free file list is put before the drives.
  void SetDrives(const std::vector<Drive>& drives);
  // The drive in use; shown without being reported.
  void SetCurrent(std::int32_t index);
  [[nodiscard]] std::int32_t Current() const { return current_; }
  // Reports the drive that is shown as taken.
  void Take();

 signals:
  void DriveTaken(std::int32_t index);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  std::int32_t current_ = 0;
  bool browsing_ = false;
};

}  // namespace ts5
