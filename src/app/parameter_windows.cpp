#include "app/parameter_windows.h"

#include <algorithm>
#include <vector>

#include "frame/job.h"
#include "midi/midi_converter.h"
#include "midi/ui/midi_convert_dialog.h"

namespace ts5 {
namespace {

bool EditConverter(Job& job, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<ConverterParameters&>(*job.parameters);
  MidiConvertDialog dialog(parameters, ItemSource(job, 0), host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

const std::vector<ParameterDialog>& Dialogs() {
  static const std::vector<ParameterDialog> dialogs{
      {FilterId::MidiConverter, EditConverter},
  };
  return dialogs;
}

}  // namespace

const ParameterDialog* FindParameterDialog(FilterId filter) {
  const auto found = std::ranges::find(Dialogs(), filter, &ParameterDialog::filter);
  return found == Dialogs().end() ? nullptr : &*found;
}

}  // namespace ts5
