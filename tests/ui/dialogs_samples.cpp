#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QTabWidget>
#include <QTemporaryDir>
#include <cmath>

#include "app/run/run_panel.h"
#include "app/shell/about_dialog.h"
#include "app/shell/help_window.h"
#include "app/shell/splash.h"
#include "app/texts.h"
#include "audio/encode/encoder.h"
#include "audio/encode/ui/ape_dialog.h"
#include "audio/encode/ui/compress_dialog.h"
#include "audio/encode/ui/decoder_dialog.h"
#include "audio/encode/ui/encoder_info_dialog.h"
#include "audio/encode/ui/engine_dialog.h"
#include "audio/encode/ui/ogg_dialog.h"
#include "audio/encode/ui/target_names_dialog.h"
#include "audio/interfaces/ui/interface_assistant.h"
#include "audio/interfaces/ui/interface_editor.h"
#include "audio/interfaces/ui/interface_manager.h"
#include "audio/texts.h"
#include "audio/ui/attributes_dialog.h"
#include "audio/ui/audio_properties_dialog.h"
#include "audio/ui/midi_to_wave_dialog.h"
#include "audio/ui/mixer_help_dialog.h"
#include "audio/ui/synthesis_format_dialog.h"
#include "audio/ui/wave_convert_dialog.h"
#include "audio/ui/wave_format_dialog.h"
#include "converters/ui/xml_converter_dialog.h"
#include "converters/ui/xml_properties_dialog.h"
#include "dialogs_support.h"
#include "disc/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/job_dialog.h"
#include "frame/ui/message_box.h"
#include "frame/ui/playback_window.h"
#include "frame/ui/qt_text.h"
#include "frame/ui/results_dialog.h"
#include "frame/ui/settings_dialog.h"
#include "midi/ui/midi_convert_dialog.h"
#include "midi/ui/midi_files_dialog.h"
#include "midi/ui/midi_properties_dialog.h"
#include "midi/ui/riff_attributes_dialog.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "preview/ui/preview_window.h"

namespace ts5 {
namespace {

constexpr std::size_t kOutlineParts = 1200;

RunResult SampleResult() {
  RunResult result;
  result.filter = FilterId::MidiConverter;
  result.titles = {texts::ResultsMidiConverter,
                   {texts::CountConverted, texts::CountNotConverted, texts::CountTracksCompressed,
                    texts::CountTracksNotBurnt}};
  result.counts = {118, 2, 17, 0};
  result.remarks = {
      "Die Datei wurde erfolgreich nach Midi-0 konvertiert.",
      "Die Konvertierung der Zeitbasis war erfolgreich. Die Startzeiten der Audio-Segmente wurden nicht "
      "angepasst.",
      "Die Quelle hat ein ungültiges Dateiformat."};
  result.cancelButton = true;
  result.items = {{"/home/clara/Musik/Chor/Abendlied.mid", "/home/clara/Musik/Chor/Abendlied.cnv.mid", 0},
                  {.source = "/home/clara/Musik/Chor/Der Mond ist aufgegangen.mid",
                   .code = -200,
                   .reason = "Das Verzeichnis \"/home/clara/Musik/Chor\" ist schreibgeschützt.",
                   .remark = "Die Zieldatei konnte nicht erstellt werden."},
                  {.source = "/home/clara/Musik/Notizen.mid",
                   .code = -104,
                   .remark = "Die Quelle hat ein ungültiges Dateiformat."}};
  return result;
}

Settings SampleSettings() {
  Settings settings;
  settings.artworkerLayoutDirectory = "/home/clara/.local/share/stavora-ts5/layoutdir";
  settings.playbackParameterDirectory = "/home/clara/.local/share/stavora-ts5/stvparamsets";
  settings.sourceDirectoryAsTarget = false;
  settings.targetDirectory = "/home/clara/Musik/Chor/Fertig";
  return settings;
}

MidiProperties SampleProperties() {
  MidiProperties properties;
  properties.title = "Eigenschaften von \"Abendlied.rmi\"";
  properties.rows = {{"Dateiformat", "RIFF"},
                     {"Letzte Bearbeitung am", "12-03-2024"},
                     {"Spuranzahl", "5"},
                     {"Zeitformat", "Ticks per Quarternote"},
                     {"Ticks pro Viertelnote", "480"}};
  properties.isRiff = true;
  properties.attributes = {{"Komponist/Künstler", "Josef Rheinberger"},
                           {"Copyright", "gemeinfrei"},
                           {"Ansicht", "Sechsstimmige Motette, op. 69 Nr. 3"},
                           {"Erstellt am", "12/3/2024"}};
  return properties;
}

// A title in the middle, with its levels and its outline.
std::unique_ptr<QWidget> PlayingWindow(DialogHost& host, FilterId filter) {
  auto run = std::make_shared<JobRun>();
  run->state = RunState::Running;
  auto waveform = std::make_shared<Waveform>(kOutlineParts);
  for (std::size_t i = 0; i < waveform->size(); ++i) {
    const auto place = static_cast<float>(i);
    (*waveform)[i] = 0.2F + 0.6F * std::abs(std::sin(place * 0.013F) * std::cos(place * 0.11F));
  }
  run->player.Report({.title = "/home/clara/Musik/Chor/Abendlied.wav",
                      .position = std::chrono::milliseconds(83'250),
                      .duration = std::chrono::minutes(4),
                      .place = BarBeat{42, 3},
                      .waveform = std::move(waveform)});
  std::vector<float> samples(2 * 4410);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i % 4 == 0 ? 0.7F : -0.2F;
  run->player.Levels().Add(samples, 2, 4410);
  auto options = std::make_shared<PlayerOptions>();
  options->volume = -600;
  return std::make_unique<PlaybackWindow>(
      PlaybackWindow::Subject{.filter = filter,
                              .title = "Chorprobe",
                              .run = std::move(run),
                              .options = [options] { return options.get(); },
                              .play = [] {},
                              .stop = [] {}},
      host, nullptr);
}

// After the others, those of rooms that have files of their own for them.
std::vector<WindowSample> WithRooms(std::vector<WindowSample> samples) {
  for (WindowSample& sample : ScoreWindowSamples()) samples.push_back(std::move(sample));
  for (WindowSample& sample : SearchWindowSamples()) samples.push_back(std::move(sample));
  for (WindowSample& sample : ArtworkerWindowSamples()) samples.push_back(std::move(sample));
  for (WindowSample& sample : DiscWindowSamples()) samples.push_back(std::move(sample));
  return samples;
}

MediaProbe SampleProbe() {
  MediaProbe probe;
  probe.kind = MediaKind::Wave;
  probe.format = PcmFormat(48000, 24, 2);
  probe.frames = 48000 * 200;
  probe.seconds = 200;
  probe.dataLength = 57600000;
  return probe;
}

AudioProperties SampleAudio() {
  using namespace std::chrono_literals;
  AudioProperties properties;
  properties.title = "Eigenschaften von \"Abendlied.wav\"";
  properties.kind = MediaKind::Wave;
  properties.rows = AudioPropertyRows(SampleProbe(), 2024y / 3 / 12, 10'584'044);
  for (const PropertyRow& row : LoudnessRows({-18.3, -0.4})) properties.rows.push_back(row);
  return properties;
}

interfaces::EncoderInterfaces SampleInterfaces() {
  return {
      {"/usr/bin/env",
       "LAME (MP3)",
       "mp3",
       {{.parameters = "--quiet -b 192 {q} {z}", .bitRate = 192},
        {.parameters = "--quiet -V 2 {q} {z}", .bitRate = 192, .vbr = true}}},
      {"/home/clara/bin/opusenc", "Opus", "opus", {{.parameters = "{q} {z} --bitrate 96", .bitRate = 96}}}};
}

// The assistant after so many pages; another leads to the pages of a set.
std::unique_ptr<QWidget> AssistantPage(DialogHost& host, int pages, bool another = false) {
  auto assistant =
      std::make_unique<interfaces::InterfaceAssistant>(SampleInterfaces(), std::string(), host, nullptr);
  Child<QListWidget>(*assistant, "foundList").setCurrentRow(1);
  for (int page = 0; page < pages; ++page) {
    Child<QCheckBox>(*assistant, "anotherCheck").setChecked(another);
    auto& parameters = Child<QLineEdit>(*assistant, "parametersEdit");
    if (parameters.text().isEmpty()) parameters.setText(QStringLiteral("--quiet -V 0 {q} {z}"));
    Child<QPushButton>(*assistant, "okButton").click();
  }
  return assistant;
}

std::unique_ptr<QWidget> SettingsPage(DialogHost& host, int page) {
  auto dialog = std::make_unique<SettingsDialog>(SampleSettings(), host, nullptr);
  Child<QTabWidget>(*dialog, "pages").setCurrentIndex(page);
  return dialog;
}

// In the middle of a long step, or of a search.
std::unique_ptr<QWidget> RunSample(FilterId filter) {
  auto panel = std::make_unique<RunPanel>();
  panel->SetFilter(filter);
  if (IsSearch(filter)) panel->BeginSearch({}, OldSearchResults::Delete, {});
  RunNews news;
  news.progress = RunProgress{.item = 3,
                              .items = 12,
                              .fraction = 0.4,
                              .elapsed = std::chrono::minutes(4),
                              .remaining = std::chrono::minutes(7),
                              .buffer = 0.9};
  news.task = Format(Text(texts::DiscBurnt), 12'345, 345'678, 12, '%', 3);
  news.status = Text(texts::CalibrationRefused);
  news.lines = {"Der Mond ist aufgegangen.wav", std::string(Text(texts::NotHurried))};
  news.hits.resize(3);
  for (SearchHit& hit : news.hits) hit.file = "/home/clara/Musik/Chor/Freude, schöner Götterfunken.rmi";
  (void)panel->Take(news);
  return panel;
}

// The longest question that there is, above all the buttons that a box can have.
std::unique_ptr<QWidget> LongQuestion() {
  auto box = std::make_unique<MessageBox>(nullptr, QMessageBox::Question, QtText(texts::AskCueSheet));
  for (const TextId text :
       {texts::ButtonSaveAgain, texts::ButtonSaveElsewhere, texts::ButtonDiscardSession, texts::ButtonCancel})
    box->addButton(QtText(text), QMessageBox::ActionRole);
  return box;
}

std::unique_ptr<QWidget> FileSample(DialogHost& host, FileDialogKind kind, std::string_view filter = {}) {
  return MakeFileDialog(
      {.title = "Datei", .start = "/usr/share", .filter = filter, .helpTopic = "inhalt.htm"}, kind, &host,
      nullptr);
}

}  // namespace

const std::vector<WindowSample>& WindowSamples() {
  static const std::vector<WindowSample> samples = WithRooms({
      {"RESULTS",
       [](DialogHost& host) {
         auto dialog = std::make_unique<ResultsDialog>(SampleResult(), true, host, nullptr);
         dialog->findChild<QPushButton*>("detailsButton")->click();
         return dialog;
       }},
      {"RESULTS-frage",
       [](DialogHost& host) {
         auto dialog = std::make_unique<ResultsDialog>(SampleResult(), false, host, nullptr);
         dialog->ShowQuestion(QtText(texts::AskQuit));
         dialog->OfferUndo(3);
         return dialog;
       }},
      {"Lauf", [](DialogHost&) { return RunSample(FilterId::CdBurner); }},
      {"Lauf-suche", [](DialogHost&) { return RunSample(FilterId::MidiSearch); }},
      {"Frage", [](DialogHost&) { return LongQuestion(); }},
      {"Frage-pfad",
       [](DialogHost&) {
         const QString path = QString("/Kammerchor-St.-Anna_Aufnahmen-2024").repeated(6) + ".mid";
         return std::make_unique<MessageBox>(nullptr, QMessageBox::Warning, "Das Ziel ist da:\n" + path,
                                             QMessageBox::Yes | QMessageBox::No);
       }},
      {"Datei-oeffnen",
       [](DialogHost& host) {
         return FileSample(host, FileDialogKind::OpenSeveral, Text(texts::SaveSessionFilter));
       }},
      {"Datei-speichern",
       [](DialogHost& host) {
         return FileSample(host, FileDialogKind::Save, Text(texts::SaveSessionFilter));
       }},
      {"Verzeichnis", [](DialogHost& host) { return FileSample(host, FileDialogKind::Directory); }},
      {"Farbe",
       [](DialogHost&) {
         auto dialog = std::make_unique<QColorDialog>();
         dialog->setOption(QColorDialog::DontUseNativeDialog);
         return dialog;
       }},
      {"CREATEJOB",
       [](DialogHost& host) {
         return std::make_unique<JobDialog>(JobDialog::Purpose::Create,
                                            JobNames{"Job 3", "Beschreibung von Job 3"}, host, nullptr);
       }},
      {"CREATEJOB-umbenennen",
       [](DialogHost& host) {
         return std::make_unique<JobDialog>(
             JobDialog::Purpose::Rename, JobNames{"Chor Midi-0", "Alle Chorsätze für das Keyboard umwandeln"},
             host, nullptr);
       }},
      {"EINSTELLUNGEN-allgemein", [](DialogHost& host) { return SettingsPage(host, 0); }},
      {"EINSTELLUNGEN-konvertierung", [](DialogHost& host) { return SettingsPage(host, 1); }},
      {"MIDICONVERT",
       [](DialogHost& host) {
         ConverterParameters parameters;
         parameters.changeContainer = true;
         parameters.changeTimeBase = true;
         return std::make_unique<MidiConvertDialog>(parameters, std::string(), host, nullptr);
       }},
      {"RIFFATTRIBUTES",
       [](DialogHost& host) {
         return std::make_unique<RiffAttributesDialog>(
             RiffAttributes{"Abendlied", "Josef Rheinberger", "gemeinfrei",
                            "Sechsstimmige Motette, op. 69 Nr. 3"},
             host, nullptr);
       }},
      {"FILEPROPS-midi",
       [](DialogHost& host) -> std::unique_ptr<QWidget> {
         return MidiPropertiesDialog(SampleProperties(), host, nullptr);
       }},
      {"PLAYBACK-audio", [](DialogHost& host) { return PlayingWindow(host, FilterId::AudioPlayer); }},
      {"PLAYBACK-midi", [](DialogHost& host) { return PlayingWindow(host, FilterId::MidiPlayer); }},
      {"MIDWAVPARAMS",
       [](DialogHost& host) {
         const MidiToWaveDevices devices{{"Stavora-Synthesizer"}, {"Monitor of Built-in Audio"}, {}};
         return std::make_unique<MidiToWaveDialog>(MidiToWaveParameters{}, devices, host, nullptr);
       }},
      {"WAVMP3PARAMS",
       [](DialogHost& host) {
         encode::EncodeSettings settings;
         settings.object = encode::CodecIndexOf(encode::EncoderId::WmaCodec);
         const encode::CompressChoices choices{.interfaces = {{"flac", true, {"Stufe 5", "Stufe 8"}}},
                                               .editAttributes = [](QWidget*) {},
                                               .editNames = [](QWidget*, const encode::EncodeSettings&) {},
                                               .replayGain = true};
         return std::make_unique<encode::CompressDialog>(settings, choices, host, nullptr);
       }},
      {"MPDECODER",
       [](DialogHost& host) {
         return std::make_unique<encode::DecoderDialog>(
             encode::DecodeOptions{.rateDivisor = 2}, "Abendlied.mp3",
             encode::CompressedFile{"MPEG-Audio Layer III (MP3), 44100 Hz, Stereo", 44100}, [](QWidget*) {},
             host, nullptr);
       }},
      {"TARGETNAMES",
       [](DialogHost& host) {
         const auto preview = [](const std::string&) {
           return std::vector<NamedItem>{
               {"/m/a.wav", {.name = "/m/01 - Kyrie.mp3"}, false},
               {"/m/b.wav", {.name = "/m/02 - Gloria.mp3"}, true},
               {"/m/c.wav", {.code = Outcome::TargetFailed}, false},
           };
         };
         return std::make_unique<encode::TargetNamesDialog>("%track% - %title%", preview, host, nullptr);
       }},
      {"BLADEPARAMS",
       [](DialogHost& host) {
         return std::make_unique<encode::EngineDialog>(encode::BeConfig(), encode::Mp3Engine::Lame, host,
                                                       nullptr);
       }},
      {"OGGPARAMS",
       [](DialogHost& host) {
         return std::make_unique<encode::OggDialog>(encode::OggSettings{}, host, nullptr);
       }},
      {"APEPARAMS",
       [](DialogHost& host) { return std::make_unique<encode::ApeDialog>(3000, host, nullptr); }},
      {"ENCODERINFO",
       [](DialogHost&) {
         return std::make_unique<encode::EncoderInfoDialog>(encode::Mp3Engine::Lame, nullptr);
       }},
      {"MODIFYMP3INTERFACES",
       [](DialogHost& host) {
         static const QTemporaryDir directory;
         const std::string file = FromQt(directory.filePath(QStringLiteral("ts5i.cdi")));
         (void)interfaces::SaveInterfaces(file, SampleInterfaces());
         return std::make_unique<interfaces::InterfaceManager>(file, host, nullptr);
       }},
      {"EDITINTERFACE",
       [](DialogHost& host) {
         return std::make_unique<interfaces::InterfaceEditor>(SampleInterfaces().back(), host, nullptr);
       }},
      {"EDITINTERFACE-set",
       [](DialogHost& host) {
         auto editor =
             std::make_unique<interfaces::InterfaceEditor>(SampleInterfaces().front(), host, nullptr);
         Child<QTabWidget>(*editor, "pages").setCurrentIndex(2);
         return editor;
       }},
      {"CREATEMP3INTERFACE", [](DialogHost& host) { return AssistantPage(host, 0); }},
      {"CREATEMP3INTERFACE-encoder", [](DialogHost& host) { return AssistantPage(host, 1); }},
      {"CREATEMP3INTERFACE-namen", [](DialogHost& host) { return AssistantPage(host, 2); }},
      {"CREATEMP3INTERFACE-sets", [](DialogHost& host) { return AssistantPage(host, 3); }},
      {"CREATEMP3INTERFACE-parameter", [](DialogHost& host) { return AssistantPage(host, 4, true); }},
      {"CREATEMP3INTERFACE-eigenschaften", [](DialogHost& host) { return AssistantPage(host, 5, true); }},
      {"WAVEFORMAT",
       [](DialogHost& host) {
         const std::vector<WaveNumbers> formats{{44100, 1, 8}, {44100, 2, 8}, {44100, 1, 16}, {44100, 2, 16}};
         return std::make_unique<WaveFormatDialog>(formats, formats.back(), host, nullptr);
       }},
      {"TIMIDITYFORMAT",
       [](DialogHost& host) {
         return std::make_unique<SynthesisFormatDialog>(WaveNumbers{44100, 2, 16}, host, nullptr);
       }},
      {"ASKDIALOG",
       [](DialogHost& host) {
         return std::make_unique<MixerHelpDialog>(texts::MidiWaveMixerNotSet, "Stereo-Mix", host, nullptr);
       }},
      {"AUDIOPROPS",
       [](DialogHost& host) -> std::unique_ptr<QWidget> {
         AudioProperties properties = SampleAudio();
         properties.kind = MediaKind::MpegLayer3;
         return AudioPropertiesDialog(properties, std::string(), host, nullptr);
       }},
      {"WAVECONVERTPARAMS",
       [](DialogHost& host) {
         return std::make_unique<WaveConvertDialog>(WaveConverterParameters(), SampleProbe(), true, host,
                                                    nullptr);
       }},
      {"FILEPROPS-wave",
       [](DialogHost& host) -> std::unique_ptr<QWidget> {
         return AudioPropertiesDialog(SampleAudio(), std::string(), host, nullptr);
       }},
      {"AUDIOPROPS-job",
       [](DialogHost& host) {
         const tags::Attributes attributes{
             {tags::AttributeType::String, "Title", "Abendlied", false, true},
             {tags::AttributeType::String, "Author", "Josef Rheinberger", false, true}};
         return std::make_unique<AttributesDialog>(attributes, host, nullptr);
       }},
      {"FILEPROPS-vergleich",
       [](DialogHost& host) -> std::unique_ptr<QWidget> {
         return MidiFilesDialog({"/home/clara/Musik/Abendlied.mid", "/home/clara/Musik/Kanon.mid"}, host,
                                nullptr);
       }},
      {"XMLCONVPARAMS",
       [](DialogHost& host) {
         return std::make_unique<converters::XmlConverterDialog>(converters::XmlConverterParameters{}, host,
                                                                 nullptr);
       }},
      {"XMLPROPS",
       [](DialogHost& host) {
         const ScoreProperties properties{
             "Eigenschaften von \"Abendlied.musicxml\"",
             {{"Titel", "Abendlied"}, {"Autor", "Josef Rheinberger"}, {"Notenzeilen", "6"}}};
         return std::make_unique<converters::XmlPropertiesDialog>(properties, host, nullptr);
       }},
      {"Notenbild",
       [](DialogHost& host) {
         auto window = std::make_unique<preview::PreviewWindow>(host);
         window->Open("/home/clara/Musik/Abendlied.musicxml");
         return window;
       }},
      {"ABOUT", [](DialogHost&) { return std::make_unique<AboutDialog>(nullptr); }},
      {"TITELBILD",
       [](DialogHost&) {
         auto splash = std::make_unique<Splash>(9);
         for (const char* step : {"Ermittle die CD-Laufwerke...", "Ermittle die Audio-Eingabegeräte...",
                                  "Ermittle die Mpeg-Codecs und -Treiber..."}) {
           splash->ShowStep(step);
         }
         return splash;
       }},
      {"Hilfe",
       [](DialogHost&) {
         auto window = std::make_unique<HelpWindow>();
         window->OpenTopic(QStringLiteral("quellmedium.htm"));
         return window;
       }},
  });
  return samples;
}

}  // namespace ts5
