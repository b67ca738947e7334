// ARTSYMBOL: characters of a font to be picked while a text is edited; stays open beside it.
#pragma once

#include <QFont>
#include <memory>

#include "frame/ui/hosted_dialog.h"

namespace Ui {
class ARTSYMBOL;
}

namespace ts5::artworker {

class SymbolDialog : public HostedDialog {
  Q_OBJECT

 public:
  SymbolDialog(const QFont& font, DialogHost& host, QWidget* parent);
  ~SymbolDialog() override;

  [[nodiscard]] QString HelpTopic() const override;

 signals:
  void Picked(const QString& symbol, const QString& face);

 private:
  void Fill();
  void Pick();
  void ShowName();
  [[nodiscard]] QString Current() const;

  std::unique_ptr<Ui::ARTSYMBOL> ui_;
};

}  // namespace ts5::artworker
