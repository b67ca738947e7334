// The groups that the dialogs of elements share: the border, and the background with its transparency.
#pragma once

#include <QGroupBox>
#include <cstdint>
#include <memory>

#include "artworker/background_list.h"
#include "artworker/layout.h"
#include "frame/ui/dialog_host.h"

namespace Ui {
class ARTBORDER;
class ARTFILL;
}  // namespace Ui

namespace ts5::artworker {

class BorderBox : public QGroupBox {
  Q_OBJECT

 public:
  // corners: whether the element has any.
  BorderBox(const ArtworkElement& element, bool corners, QWidget* parent = nullptr);
  ~BorderBox() override;

  void Take(ArtworkElement& element) const;

 private:
  std::unique_ptr<Ui::ARTBORDER> ui_;
};

class FillBox : public QGroupBox {
  Q_OBJECT

 public:
  // What stands for the first background: itself, or that there is none, as images have it.
  enum class First : std::uint8_t { Itself, None };
  // The list and the host outlive the box.
  FillBox(const Fill& fill, First first, BackgroundList& backgrounds, DialogHost& host,
          QWidget* parent = nullptr);
  ~FillBox() override;

  [[nodiscard]] Fill Chosen() const;

 private:
  void Refill(int chosen);
  void OfferDelete();
  void AddNew();
  void DeleteChosen();

  First first_;
  BackgroundList& backgrounds_;
  DialogHost& host_;
  std::unique_ptr<Ui::ARTFILL> ui_;
};

}  // namespace ts5::artworker
