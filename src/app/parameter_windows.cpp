#include "app/parameter_windows.h"

#include <algorithm>
#include <vector>

#include "app/application.h"
#include "audio/midi_recording.h"
#include "audio/midi_to_wave_parameters.h"
#include "audio/ui/midi_to_wave_dialog.h"
#include "audio/ui/mixer_help_dialog.h"
#include "audio/ui/wave_convert_dialog.h"
#include "frame/job.h"
#include "midi/midi_capture.h"
#include "midi/midi_converter.h"
#include "midi/ui/midi_convert_dialog.h"
#include "score/ui/score_midi_dialog.h"
#include "search/melody_store.h"
#include "search/search_parameters.h"
#include "search/ui/search_dialog.h"

namespace ts5 {
namespace {

bool EditConverter(Job& job, Application& /*application*/, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<ConverterParameters&>(*job.parameters);
  MidiConvertDialog dialog(parameters, ItemSource(job, 0), host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

bool EditWaveConverter(Job& job, Application& /*application*/, DialogHost& host, QWidget* owner) {
  return EditWaveConverterParameters(job, host, owner);
}

bool EditSearch(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<SearchParameters&>(*job.parameters);
  MelodyStore store(application.GetRegistry());
  const auto open = [](const std::string& device) { return OpenMidiDevice(device); };
  SearchDialog dialog(job.filter, parameters, store, application.Devices().midiOutputs, open, host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

bool EditMidiToWave(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<MidiToWaveParameters&>(*job.parameters);
  const DeviceLists& devices = application.Devices();
  MidiToWaveDialog dialog(parameters, {devices.midiOutputs, devices.audioInputs, RecordingFormatsOf}, host,
                          owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

bool PrepareMidiToWave(const Job& job, Application& application, DialogHost& host, QWidget* owner) {
  const auto& parameters = static_cast<const MidiToWaveParameters&>(*job.parameters);
  return PrepareMixer(parameters, application.Devices().audioInputs, application.GetSettings(), host, owner);
}

bool EditScoreToMidi(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<ScoreToMidiParameters&>(*job.parameters);
  ScoreMidiDialog dialog(parameters, ItemSource(job, 0), application.GetSettings().playbackParameterDirectory,
                         host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

const std::vector<ParameterDialog>& Dialogs() {
  static const std::vector<ParameterDialog> dialogs{
      {FilterId::MidiConverter, EditConverter},
      {FilterId::WaveConverter, EditWaveConverter},
      {FilterId::ScoreSearch, EditSearch},
      {FilterId::MidiSearch, EditSearch},
      {FilterId::MidiToWave, EditMidiToWave, PrepareMidiToWave},
      {FilterId::ScoreToMidi, EditScoreToMidi},
  };
  return dialogs;
}

}  // namespace

const ParameterDialog* FindParameterDialog(FilterId filter) {
  const auto found = std::ranges::find(Dialogs(), filter, &ParameterDialog::filter);
  return found == Dialogs().end() ? nullptr : &*found;
}

}  // namespace ts5
