#include "app/shell/parameter_windows.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "app/shell/application.h"
#include "app/shell/layout_window.h"
#include "audio/encode/compressor.h"
#include "audio/encode/decompressor.h"
#include "audio/encode/ui/compress_dialog.h"
#include "audio/encode/ui/decoder_dialog.h"
#include "audio/encode/ui/target_names_dialog.h"
#include "audio/interfaces/encoder_interface.h"
#include "audio/midi_recording.h"
#include "audio/midi_to_wave_parameters.h"
#include "audio/ui/attributes_dialog.h"
#include "audio/ui/midi_to_wave_dialog.h"
#include "audio/ui/mixer_help_dialog.h"
#include "audio/ui/wave_convert_dialog.h"
#include "converters/transcribe/ui/midi_to_score_dialog.h"
#include "converters/ui/xml_converter_dialog.h"
#include "disc/ui/burn_dialog.h"
#include "disc/ui/drive_wait.h"
#include "disc/ui/grab_dialog.h"
#include "frame/cd_tracks.h"
#include "frame/job.h"
#include "frame/target_naming.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "midi/midi_capture.h"
#include "midi/ui/midi_convert_dialog.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "score/ui/score_midi_dialog.h"
#include "search/melody_store.h"
#include "search/search_parameters.h"
#include "search/ui/search_dialog.h"

namespace ts5 {
namespace {

// What is edited, beside the parameters.
struct EditPlace {
  Job& job;
  Application& application;
  DialogHost& host;
  QWidget* owner;
};

// An entry of the table out of a function that gets the parameters as what they are.
template <typename P>
auto Typed(bool (*function)(P&, const EditPlace&)) {
  return [function](Job& job, Application& application, DialogHost& host, QWidget* owner) {
    return function(As<P>(*job.parameters), {job, application, host, owner});
  };
}

template <typename Dialog, typename P>
bool TakeFrom(Dialog& dialog, P& parameters) {
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

// An entry for a window that needs nothing but the parameters.
template <typename Dialog>
auto Plain() {
  using P = std::remove_cvref_t<decltype(std::declval<Dialog>().Parameters())>;
  return Typed<P>([](P& parameters, const EditPlace& place) {
    Dialog dialog(parameters, place.host, place.owner);
    return TakeFrom(dialog, parameters);
  });
}

bool EditConverter(ConverterParameters& parameters, const EditPlace& place) {
  MidiConvertDialog dialog(parameters, ItemSource(place.job, 0), place.host, place.owner);
  return TakeFrom(dialog, parameters);
}

bool EditWave(WaveConverterParameters& parameters, const EditPlace& place) {
  return EditWaveConverter(parameters, place.job, place.host, place.owner);
}

// What the compressor's window offers; attributes are those that it edits.
encode::CompressChoices EncoderChoices(tags::Attributes& attributes, DialogHost& host) {
  encode::CompressChoices choices;
  for (const interfaces::EncoderInterface& interface :
       interfaces::LoadInterfaces(interfaces::InterfacesPath())) {
    auto& row = choices.interfaces.emplace_back(encode::CompressChoices::Interface{
        .name = interface.name, .available = interface.Available(), .sets = {}});
    for (const interfaces::ParameterSet& set : interface.sets) row.sets.push_back(set.parameters);
  }
  choices.editAttributes = [&attributes, &host](QWidget* dialog) {
    if (auto edited = EditJobAttributes(attributes, host, dialog)) attributes = *std::move(edited);
  };
  return choices;
}

// Edits the pattern of the targets' names; parameters are those that the names would be made with.
template <typename P>
void EditNames(const EditPlace& place, P parameters, std::string& pattern, QWidget* owner) {
  const FilterModule* const module = place.application.Module(place.job.filter);
  if (module == nullptr) return;
  DestinationRules rules = DestinationRulesOf(place.application.GetSettings(), place.job);
  rules.origin = NameOrigin::Automatic;
  Job shown = place.job;
  const auto preview = [&](const std::string& typed) {
    parameters.namePattern = typed;
    shown.parameters = parameters.Clone();
    return PreviewTargets(shown, *module, rules, SystemDestinationFiles());
  };
  encode::TargetNamesDialog dialog(pattern, preview, place.host, owner);
  if (dialog.exec() == QDialog::Accepted) pattern = dialog.Pattern();
}

bool EditCompressor(encode::AudioCompressorParameters& parameters, const EditPlace& place) {
  tags::Attributes attributes = parameters.attributes;
  std::string pattern = parameters.namePattern;
  encode::CompressChoices choices = EncoderChoices(attributes, place.host);
  choices.replayGain = parameters.replayGain;
  choices.editNames = [&](QWidget* dialog, const encode::EncodeSettings& chosen) {
    encode::AudioCompressorParameters edited = parameters;
    edited.encode = chosen;
    edited.attributes = attributes;
    EditNames(place, std::move(edited), pattern, dialog);
  };
  encode::CompressDialog dialog(parameters.encode, std::move(choices), place.host, place.owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters.encode = dialog.Settings();
  parameters.attributes = std::move(attributes);
  parameters.replayGain = dialog.ReplayGain();
  parameters.namePattern = std::move(pattern);
  return true;
}

// The page of the decoder of the one file that is selected.
bool EditDecompressor(encode::AudioDecompressorParameters& parameters, const EditPlace& place) {
  const std::size_t items = ItemCount(place.job);
  if (items != 1) {
    ShowNotice(place.owner, items == 0 ? texts::NoDecoderPage : texts::DecoderPageNeedsOneFile);
    return false;
  }
  const std::string source = ItemSource(place.job, 0);
  const auto file = encode::DescribeCompressed(source);
  if (!file) {
    if (file.error() == Outcome::WrongFormat) {
      ShowNotice(place.owner, texts::NoDecoderPage);
    } else {
      ShowNotice(place.owner, ToQt(Format(Text(texts::DecoderPageFailed), Code(file.error()))));
    }
    return false;
  }
  std::string pattern = parameters.namePattern;
  const auto editNames = [&](QWidget* dialog) { EditNames(place, parameters, pattern, dialog); };
  encode::DecoderDialog dialog(parameters.decode, std::string(FileNameOf(source)), *file, editNames,
                               place.host, place.owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters.decode = dialog.Options();
  parameters.namePattern = std::move(pattern);
  return true;
}

bool EditSearch(SearchParameters& parameters, const EditPlace& place) {
  MelodyStore store(place.application.GetRegistry());
  const auto open = [](const std::string& device) { return OpenMidiDevice(device); };
  SearchDialog dialog(SearchKindOf(place.job.filter), parameters, store,
                      place.application.Devices().midiOutputs, open, place.host, place.owner);
  return TakeFrom(dialog, parameters);
}

bool EditMidiToWave(MidiToWaveParameters& parameters, const EditPlace& place) {
  const DeviceLists& devices = place.application.Devices();
  MidiToWaveDialog dialog(parameters, {devices.midiOutputs, devices.audioInputs, RecordingFormatsOf},
                          place.host, place.owner);
  return TakeFrom(dialog, parameters);
}

bool PrepareMidiToWave(const MidiToWaveParameters& parameters, const EditPlace& place) {
  return PrepareMixer(parameters, place.application.Devices().audioInputs, place.application.GetSettings(),
                      place.host, place.owner);
}

bool EditScoreToMidi(ScoreToMidiParameters& parameters, const EditPlace& place) {
  ScoreMidiDialog dialog(parameters, ItemSource(place.job, 0),
                         place.application.GetSettings().playbackParameterDirectory, place.host, place.owner);
  return TakeFrom(dialog, parameters);
}

// The recorder that the job writes to.
disc::RecorderFacts RecorderOf(const EditPlace& place) {
  const auto& writers = place.application.Devices().writers;
  if (writers.empty()) return disc::FactsOfRecorder({});
  const auto index = static_cast<std::size_t>(std::max(place.job.destinationDevice, 0));
  return disc::FactsOfRecorder(writers[std::min(index, writers.size() - 1)]);
}

bool EditBurner(disc::BurnParameters& parameters, const EditPlace& place) {
  const DeviceLists& devices = place.application.Devices();
  disc::BurnDialog dialog(parameters, place.application.GetJobs().Find(place.job.Id()).value_or(0),
                          RecorderOf(place), {devices.midiOutputs, devices.audioInputs, RecordingFormatsOf},
                          place.host, place.owner);
  return TakeFrom(dialog, parameters);
}

bool EditCopier(disc::CopyParameters& parameters, const EditPlace& place) {
  disc::CopyDialog dialog(parameters, RecorderOf(place), place.host, place.owner);
  return TakeFrom(dialog, parameters);
}

bool EditGrabber(disc::GrabParameters& parameters, const EditPlace& place) {
  constexpr int kTracksWithoutDisc = 20;
  const auto disc = disc::WithDrive([&] { return FindAudioCd(place.job.directory.path); });
  const int tracks = disc ? disc->tracks.back().number : kTracksWithoutDisc;
  tags::Attributes attributes = parameters.attributes;
  disc::GrabDialog dialog(parameters, tracks, EncoderChoices(attributes, place.host), place.host,
                          place.owner);
  if (!TakeFrom(dialog, parameters)) return false;
  parameters.attributes = std::move(attributes);
  return true;
}

const std::vector<ParameterDialog>& Dialogs() {
  static const std::vector<ParameterDialog> dialogs{
      {FilterId::MidiConverter, Typed(EditConverter)},
      {FilterId::WaveConverter, Typed(EditWave)},
      {FilterId::AudioCompressor, Typed(EditCompressor)},
      {FilterId::AudioDecompressor, Typed(EditDecompressor)},
      {FilterId::ScoreSearch, Typed(EditSearch)},
      {FilterId::MidiSearch, Typed(EditSearch)},
      {FilterId::MidiToWave, Typed(EditMidiToWave), Typed(PrepareMidiToWave)},
      {FilterId::ScoreToMidi, Typed(EditScoreToMidi)},
      {FilterId::XmlConverter, Plain<converters::XmlConverterDialog>()},
      {FilterId::MidiToScore, Plain<transcribe::MidiToScoreDialog>()},
      {FilterId::CdBurner, Typed(EditBurner)},
      {FilterId::CdGrabber, Typed(EditGrabber)},
      {FilterId::CdCopier, Typed(EditCopier)},
      {.filter = FilterId::Artworker, .prepare = PrepareLayoutPrint, .open = OpenLayoutWindow},
  };
  return dialogs;
}

}  // namespace

const ParameterDialog* FindParameterDialog(FilterId filter) {
  const auto found = std::ranges::find(Dialogs(), filter, &ParameterDialog::filter);
  return found == Dialogs().end() ? nullptr : &*found;
}

bool EditParameters(ActiveJob& active, Application& application, JobWindows& windows, Desk& desk) {
  Job& job = *active;
  const ParameterDialog* const dialog = FindParameterDialog(job.filter);
  if (dialog == nullptr || !job.parameters) {
    ShowNotice(desk.Window(), texts::NoDecoderPage);
    return false;
  }
  if (!dialog->open) return dialog->edit(job, application, desk, desk.Window());
  windows.Open(job, JobWindows::Use::WhileIdle, [&](const JobFinder& find) {
    const WindowLinks links{.run =
                                [find, &active, &desk] {
                                  const Job* const found = find();
                                  if (found != nullptr && active.Activate(found->Id()))
                                    desk.Actions().Trigger(CommandId::Run);
                                },
                            .edited =
                                [find, &active] {
                                  const Job* const found = find();
                                  if (found == &*active) active.Refresh();
                                },
                            .showDestination =
                                [find, &active] {
                                  if (find() == &*active) active.ShowDestination();
                                }};
    return dialog->open(find, links, application, desk, desk.Window());
  });
  return false;
}

}  // namespace ts5
