// The staves of a score as a row of lamps: those that sound are lit.
#pragma once

#include <QStringList>
#include <QWidget>
#include <vector>

namespace ts5 {

class StaffLights : public QWidget {
  Q_OBJECT

 public:
  explicit StaffLights(QWidget* parent = nullptr);

  void SetStaves(QStringList names);
  void SetLit(const std::vector<bool>& lit);
  [[nodiscard]] const std::vector<bool>& Lit() const { return lit_; }

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] bool hasHeightForWidth() const override { return true; }
  [[nodiscard]] int heightForWidth(int width) const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool event(QEvent* event) override;

 private:
  [[nodiscard]] int Columns(int width) const;
  [[nodiscard]] int RowHeight() const;

  QStringList names_;
  std::vector<bool> lit_;
};

}  // namespace ts5
