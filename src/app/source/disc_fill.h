// How long the project of a disc is against what fits on the disc in the recorder.
#pragma once

#include <QProgressBar>
#include <cstdint>
#include <optional>

namespace ts5 {

class DiscFill : public QProgressBar {
  Q_OBJECT

 public:
  explicit DiscFill(QWidget* parent = nullptr);

  // Both in seconds. free: nothing while there is no blank disc in the recorder.
  void ShowProject(std::uint64_t project, std::optional<std::uint32_t> free);
  [[nodiscard]] bool Fits() const { return fits_; }

 private:
  bool fits_ = true;
};

}  // namespace ts5
