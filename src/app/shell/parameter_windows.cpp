#include "app/shell/parameter_windows.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "app/run/disc_at_hand.h"
#include "app/shell/application.h"
#include "artworker/artworker_parameters.h"
#include "artworker/print_run.h"
#include "artworker/texts.h"
#include "artworker/ui/artworker_window.h"
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
#include "frame/backgrounds.h"
#include "frame/cd_tracks.h"
#include "frame/job.h"
#include "frame/target_naming.h"
#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "midi/midi_capture.h"
#include "midi/ui/midi_convert_dialog.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/paths.h"
#include "score/ui/score_midi_dialog.h"
#include "search/melody_store.h"
#include "search/search_parameters.h"
#include "search/ui/search_dialog.h"

namespace ts5 {
namespace {

bool EditConverter(Job& job, Application& /*application*/, DialogHost& host, QWidget* owner) {
  return EditMidiConverterParameters(job, host, owner);
}

bool EditWaveConverter(Job& job, Application& /*application*/, DialogHost& host, QWidget* owner) {
  return EditWaveConverterParameters(job, host, owner);
}

// What the compressor's window offers; attributes are those that it edits.
CompressChoices EncoderChoices(Attributes& attributes, DialogHost& host) {
  CompressChoices choices;
  for (const EncoderInterface& interface : LoadInterfaces(InterfacesPath())) {
    auto& row = choices.interfaces.emplace_back(
        CompressChoices::Interface{.name = interface.name, .available = interface.Available(), .sets = {}});
    for (const ParameterSet& set : interface.sets) row.sets.push_back(set.parameters);
  }
  choices.editAttributes = [&attributes, &host](QWidget* dialog) {
    if (auto edited = EditJobAttributes(attributes, host, dialog)) attributes = *std::move(edited);
  };
  return choices;
}

// Edits the pattern of the targets' names; parameters are those that the names would be made with.
template <typename P>
void EditNames(const Job& job, Application& application, P parameters, std::string& pattern, DialogHost& host,
               QWidget* owner) {
  const FilterModule* const module = application.Module(job.filter);
  if (module == nullptr) return;
  DestinationRules rules = DestinationRulesOf(application.GetSettings(), job);
  rules.origin = NameOrigin::Automatic;
  Job shown = job;
  const auto preview = [&](const std::string& typed) {
    parameters.namePattern = typed;
    shown.parameters = parameters.Clone();
    return PreviewTargets(shown, *module, rules, SystemDestinationFiles());
  };
  TargetNamesDialog dialog(pattern, preview, host, owner);
  if (dialog.exec() == QDialog::Accepted) pattern = dialog.Pattern();
}

bool EditCompressor(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<AudioCompressorParameters&>(*job.parameters);
  Attributes attributes = parameters.attributes;
  std::string pattern = parameters.namePattern;
  CompressChoices choices = EncoderChoices(attributes, host);
  choices.replayGain = parameters.replayGain;
  choices.editNames = [&](QWidget* dialog, const EncodeSettings& chosen) {
    AudioCompressorParameters edited = parameters;
    edited.encode = chosen;
    edited.attributes = attributes;
    EditNames(job, application, std::move(edited), pattern, host, dialog);
  };
  CompressDialog dialog(parameters.encode, std::move(choices), host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters.encode = dialog.Settings();
  parameters.attributes = std::move(attributes);
  parameters.replayGain = dialog.ReplayGain();
  parameters.namePattern = std::move(pattern);
  return true;
}

// The page of the decoder of the one file that is selected.
bool EditDecompressor(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<AudioDecompressorParameters&>(*job.parameters);
  const std::size_t items = ItemCount(job);
  if (items != 1) {
    ShowNotice(owner, items == 0 ? texts::NoDecoderPage : texts::DecoderPageNeedsOneFile);
    return false;
  }
  const std::string source = ItemSource(job, 0);
  const auto file = DescribeCompressed(source);
  if (!file) {
    if (file.error() == Outcome::WrongFormat) {
      ShowNotice(owner, texts::NoDecoderPage);
    } else {
      ShowNotice(owner, ToQt(Format(Text(texts::DecoderPageFailed), Code(file.error()))));
    }
    return false;
  }
  std::string pattern = parameters.namePattern;
  const auto editNames = [&](QWidget* dialog) {
    EditNames(job, application, parameters, pattern, host, dialog);
  };
  DecoderDialog dialog(parameters.decode, std::string(FileNameOf(source)), *file, editNames, host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters.decode = dialog.Options();
  parameters.namePattern = std::move(pattern);
  return true;
}

bool EditSearch(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = As<SearchParameters>(*job.parameters);
  MelodyStore store(application.GetRegistry());
  const auto open = [](const std::string& device) { return OpenMidiDevice(device); };
  SearchDialog dialog(job.filter, parameters, store, application.Devices().midiOutputs, open, host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

bool EditMidiToWave(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = As<MidiToWaveParameters>(*job.parameters);
  const DeviceLists& devices = application.Devices();
  MidiToWaveDialog dialog(parameters, {devices.midiOutputs, devices.audioInputs, RecordingFormatsOf}, host,
                          owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

bool PrepareMidiToWave(const Job& job, Application& application, DialogHost& host, QWidget* owner) {
  const auto& parameters = As<MidiToWaveParameters>(*job.parameters);
  return PrepareMixer(parameters, application.Devices().audioInputs, application.GetSettings(), host, owner);
}

bool EditScoreToMidi(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = As<ScoreToMidiParameters>(*job.parameters);
  ScoreMidiDialog dialog(parameters, ItemSource(job, 0), application.GetSettings().playbackParameterDirectory,
                         host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

bool EditXmlConverter(Job& job, Application& /*application*/, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<XmlConverterParameters&>(*job.parameters);
  XmlConverterDialog dialog(parameters, host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

// The name of the recorder that the job writes to.
std::string RecorderOf(const Job& job, const DeviceLists& devices) {
  if (devices.writers.empty()) return {};
  const auto index = static_cast<std::size_t>(std::max(job.destinationDevice, 0));
  return devices.writers[std::min(index, devices.writers.size() - 1)];
}

bool EditBurner(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<disc::BurnParameters&>(*job.parameters);
  const DeviceLists& devices = application.Devices();
  disc::BurnDialog dialog(parameters, application.GetJobs().Find(job.Id()).value_or(0),
                          disc::FactsOfRecorder(RecorderOf(job, devices)),
                          {devices.midiOutputs, devices.audioInputs, RecordingFormatsOf}, host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

bool EditMidiToScore(Job& job, Application& /*application*/, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<transcribe::MidiToScoreParameters&>(*job.parameters);
  transcribe::MidiToScoreDialog dialog(parameters, host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

bool EditCopier(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<disc::CopyParameters&>(*job.parameters);
  disc::CopyDialog dialog(parameters, disc::FactsOfRecorder(RecorderOf(job, application.Devices())), host,
                          owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  return true;
}

bool EditGrabber(Job& job, Application& /*application*/, DialogHost& host, QWidget* owner) {
  constexpr int kTracksWithoutDisc = 20;
  auto& parameters = static_cast<disc::GrabParameters&>(*job.parameters);
  const auto disc = disc::WithDrive([&] { return FindAudioCd(job.directory.path); });
  const int tracks = disc ? disc->tracks.back().number : kTracksWithoutDisc;
  Attributes attributes = parameters.attributes;
  disc::GrabDialog dialog(parameters, tracks, EncoderChoices(attributes, host), host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  parameters = dialog.Parameters();
  parameters.attributes = std::move(attributes);
  return true;
}

// --- the Artworker

// The printer that is chosen in the main window; "" for none.
std::string PrinterOf(const Job& job, const DeviceLists& devices) {
  return std::cmp_less(std::max(job.destinationDevice, 0), devices.printers.size())
             ? devices.printers[static_cast<std::size_t>(std::max(job.destinationDevice, 0))]
             : std::string();
}

void ChoosePrinter(Job& job, const DeviceLists& devices) {
  const auto& printer = static_cast<artworker::ArtworkerParameters&>(*job.parameters).printer;
  const auto found = std::ranges::find(devices.printers, printer);
  if (found != devices.printers.end())
    job.destinationDevice = static_cast<std::int32_t>(found - devices.printers.begin());
}

QWidget* OpenArtworker(const JobFinder& find, const WindowLinks& links, Application& application,
                       DialogHost& host, QWidget* owner) {
  const Job* const job = find();
  if (job == nullptr) return nullptr;
  const auto parameters = [find]() -> artworker::ArtworkerParameters* {
    Job* const found = find();
    return found != nullptr ? static_cast<artworker::ArtworkerParameters*>(found->parameters.Get()) : nullptr;
  };
  parameters()->printer = PrinterOf(*job, application.Devices());
  artworker::ArtworkerWindow::Subject subject{
      .title = job->title,
      .parameters = parameters,
      .running =
          [find] {
            const Job* const found = find();
            return found != nullptr && !found->MayChange();
          },
      .printers = application.Devices().printers,
      .folder = application.GetSettings().artworkerLayoutDirectory,
      .backgrounds = {.load = [&application] { return LoadBackgrounds(application.GetRegistry()); },
                      .save =
                          [&application](const std::vector<Background>& backgrounds) {
                            return SaveBackgrounds(application.GetRegistry(), backgrounds);
                          }},
      .fits = {.load =
                   [&application](const std::string& printer) {
                     return artworker::LoadPrinterFit(application.GetRegistry(), printer);
                   },
               .save =
                   [&application](const std::string& printer, const artworker::PrinterFit& fit) {
                     return artworker::SavePrinterFit(application.GetRegistry(), printer, fit);
                   }},
      .facts =
          [find, &application] {
            const Job* const found = find();
            return found != nullptr ? DiscAtHand(*found, application.GetJobs()) : artworker::DiscFacts{};
          },
      .printerChosen =
          [find, links, &application] {
            if (Job* const found = find()) ChoosePrinter(*found, application.Devices());
            links.showDestination();
          },
      .print = links.run,
      .edited = links.edited};
  return new artworker::ArtworkerWindow(std::move(subject), host, owner);
}

// What a run takes along: the printer, the backgrounds as they are now, the disc; and the name of the file
// that "PDF-Datei" is to write.
bool PrepareArtworker(Job& job, Application& application, DialogHost& host, QWidget* owner) {
  auto& parameters = static_cast<artworker::ArtworkerParameters&>(*job.parameters);
  parameters.printer = PrinterOf(job, application.Devices());
  TakeGround(parameters, application.GetRegistry());
  parameters.disc = DiscAtHand(job, application.GetJobs());
  const bool nothing = parameters.printWhat == 0 && !parameters.calibration;
  if (nothing || parameters.printer != Text(texts::PdfPrinter)) return true;
  std::string start = job.destinationName;
  if (start.empty() && !parameters.fileName.empty()) start = WithExtension(parameters.fileName, "pdf");
  if (start.empty()) start = JoinPath(HomeDirectory(), std::string(Text(texts::ArtworkDocument)) + ".pdf");
  const auto file = AskDestination({.title = QtText(texts::AskPdfFile),
                                    .start = std::move(start),
                                    .filter = Text(texts::PdfFilter),
                                    .helpTopic = QStringLiteral("parm_artworker.htm")},
                                   host, owner);
  if (file) job.destinationName = *file;
  return file.has_value();
}

const std::vector<ParameterDialog>& Dialogs() {
  static const std::vector<ParameterDialog> dialogs{
      {FilterId::MidiConverter, EditConverter},
      {FilterId::WaveConverter, EditWaveConverter},
      {FilterId::AudioCompressor, EditCompressor},
      {FilterId::AudioDecompressor, EditDecompressor},
      {FilterId::ScoreSearch, EditSearch},
      {FilterId::MidiSearch, EditSearch},
      {FilterId::MidiToWave, EditMidiToWave, PrepareMidiToWave},
      {FilterId::ScoreToMidi, EditScoreToMidi},
      {FilterId::XmlConverter, EditXmlConverter},
      {FilterId::MidiToScore, EditMidiToScore},
      {FilterId::CdBurner, EditBurner},
      {FilterId::CdGrabber, EditGrabber},
      {FilterId::CdCopier, EditCopier},
      {.filter = FilterId::Artworker, .prepare = PrepareArtworker, .open = OpenArtworker},
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
  windows.Open(job, [&](const JobFinder& find) {
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
