#include "app/shell/application.h"

#include <QPrinterInfo>
#include <algorithm>
#include <optional>
#include <utility>

#include "app/shell/named_printers.h"
#include "app/texts.h"
#include "frame/cd_tracks.h"
#include "frame/run_journal.h"
#include "frame/settings_store.h"
#include "frame/texts.h"
#include "modules/filter_modules.h"
#include "platform/base/text.h"
#include "platform/disc/cd_drive.h"
#include "platform/files/files.h"
#include "platform/files/music_directory.h"
#include "platform/sound/audio_in.h"
#include "platform/sound/audio_out.h"
#include "platform/sound/midi_out.h"
#include "platform/store/reg_file.h"

namespace ts5 {
namespace {

std::vector<std::string> Printers() {
  std::vector<std::string> names;
  for (const QString& name : QPrinterInfo::availablePrinterNames()) names.push_back(name.toStdString());
  names.emplace_back(Text(texts::PdfPrinter));  // built in, so that there is always one
  return names;
}

std::vector<std::string> Writers() {
  std::vector<std::string> names;
  for (const CdDriveEntry& drive : CdWriters()) names.push_back(drive.name.Whole());
  return names;
}

}  // namespace

SoundDevices FindSoundDevices() {
  return {AudioInputDevices(), AudioOutputDevices(), MidiOutputDevices()};
}

Application::Application(const StartOptions& options, const std::function<void(TextId)>& announce)
    : announce_(announce ? announce : [](TextId) {}),
      registryPath_(options.registryPath),
      patience_(options.patience),
      modules_(options.modules ? options.modules : ModuleFinder(&FindModule)),
      ownDrives_(!options.devices && !options.volumes),
      ownDevices_(!options.devices),
      runner_(modules_),
      session_(DefaultSettingsGround()) {
  OpenRegistry();
  siblings_ = FindSiblings(*registry_);

  announce_(texts::StartDrives);
  volumes_ = options.volumes ? *options.volumes : VolumeTable::OfThisMachine();
  devices_ = options.devices.value_or(DeviceLists{});
  if (!options.devices) devices_.writers = Writers();
  announce_(texts::StartAudioInputs);
  announce_(texts::StartAudioOutputs);
  if (!options.devices) {
    devices_.audioInputs = AudioInputDevices();
    devices_.audioOutputs = AudioOutputDevices();
  }
  announce_(texts::StartMidiDevices);
  if (!options.devices) devices_.midiOutputs = MidiOutputDevices();
  announce_(texts::StartCodecs);
  announce_(texts::StartPrinters);
  if (!options.devices) devices_.printers = Printers();
  settings_ = session_.ReadSettings(*registry_);
  CheckRecordMixer(settings_, [this](std::int32_t line) -> std::optional<std::string> {
    const std::vector<std::string>& inputs = devices_.audioInputs;
    if (std::cmp_greater_equal(line, inputs.size())) return std::nullopt;
    return inputs[static_cast<std::size_t>(line)];
  });
  announce_(texts::StartMp3Interfaces);

  announce_(texts::StartMainWindow);
  JobSurroundings surroundings = JobSurroundingsOf(volumes_, modules_, FindAudioCd);
  surroundings.audioDevices = devices_.audioOutputs.size();
  surroundings.midiDevices = devices_.midiOutputs.size();
  auto stored = session_.ReadJobs(*registry_, surroundings);
  if (!stored) {
    // What could not be read is not replaced by what is made up now: only what the session changes is
    // written.
    notices_.push_back(RegistryFailureText(stored.error(), registryPath_));
    stored = StoredJobs{JobFromValues({}, 0, surroundings), {}};
  }
  // Whoever begins, begins with his music.
  if (!registry_->Exists(Format("%s\\%s\\Jobs", kLocalMachine, kSettingsKey)).value_or(true)) {
    Job& first = stored->defaultJob;
    const std::string music = MusicDirectory();
    if (!music.empty() && volumes_.DriveOfPath(music) == first.sourceDrive) first.directory.path = music;
  }
  FindNamedPrinters(*stored, devices_.printers);
  jobs_ = std::make_unique<Jobs>(std::move(*stored), modules_);
  session_.Adopt(*jobs_);
}

Application::~Application() = default;

std::string Application::Journals() const {
  return JournalDirectory(registryPath_);
}

bool Application::AddSoundDevices(const SoundDevices& found) {
  bool any = false;
  for (const auto list :
       {&SoundDevices::audioInputs, &SoundDevices::audioOutputs, &SoundDevices::midiOutputs}) {
    std::vector<std::string>& known = devices_.*list;
    for (const std::string& name : found.*list) {
      if (std::ranges::find(known, name) != known.end()) continue;
      known.push_back(name);
      any = true;
    }
  }
  return any;
}

std::function<SoundPlaces()> Application::SoundFinder() const {
  if (ownDevices_) return FindSoundPlaces;
  // Given devices are all that there are.
  SoundPlaces places;
  if (!devices_.audioOutputs.empty()) places.audio = devices_.audioOutputs.front();
  if (!devices_.midiOutputs.empty()) places.midi = devices_.midiOutputs.front();
  return [places] { return places; };
}

void Application::LookForDrives() {
  if (!ownDrives_) return;
  volumes_ = VolumeTable::OfThisMachine();
  devices_.writers = Writers();
  for (std::size_t i = 0; i <= jobs_->Count(); ++i) {
    Job& job = (*jobs_)[i];
    if (job.Mode() != SourceMode::Directory) continue;
    const int drive = volumes_.DriveOfPath(job.directory.path);
    if (drive != kNoDrive) job.sourceDrive = drive;
  }
}

void Application::OpenRegistry() {
  auto opened = Registry::Open(registryPath_, RegistryAccess::ReadWrite, patience_);
  if (!opened) {
    // The program works without its store; what is set up waits for it.
    notices_.push_back(RegistryFailureText(opened.error(), registryPath_) + "\n\n" +
                       std::string(Text(texts::RegistryWaits)));
    waiting_ = true;
    opened = Registry::Open(kRegistryInMemory);
  }
  registry_.emplace(std::move(*opened));
  if (!registry_->Notice().empty()) notices_.push_back(registry_->Notice());
}

// The file in place of the memory that stood in for it, with all that was put there.
Outcome Application::ReachRegistry(std::chrono::milliseconds patience) {
  if (!waiting_) return Outcome::Success;
  auto file = Registry::Open(registryPath_, RegistryAccess::ReadWrite, patience);
  if (!file) return file.error();
  if (const Outcome taken = file->TakeAll(*registry_); Failed(taken)) return taken;
  file->SetPatience(patience_);
  registry_ = std::move(*file);
  waiting_ = false;
  return Outcome::Success;
}

bool Application::LookAtRegistry() {
  constexpr std::chrono::milliseconds kGlance{50};  // the window waits for it
  const bool waited = waiting_;
  if (Failed(ReachRegistry(kGlance))) return false;
  registry_->SetPatience(kGlance);
  const bool changed = session_.TakeOver(*registry_, settings_, *jobs_).value_or(false);
  if (waited) (void)session_.Save(*registry_, settings_, *jobs_);  // tried again at the end
  registry_->SetPatience(patience_);
  return changed;
}

std::optional<std::string> Application::Save() {
  NamePrinters(*jobs_, devices_.printers);
  Outcome saved = ReachRegistry(patience_);
  if (Succeeded(saved)) saved = session_.Save(*registry_, settings_, *jobs_);
  if (Succeeded(saved)) return std::nullopt;
  return RegistryFailureText(saved, registryPath_);
}

Outcome Application::SaveElsewhere(const std::string& regFile) {
  NamePrinters(*jobs_, devices_.printers);
  auto copy = Registry::Open(kRegistryInMemory);
  if (!copy) return copy.error();
  // What the file holds beside, as far as it can be read: melodies and the like.
  (void)copy->TakeAll(*registry_);
  Outcome saved = SaveSettings(*copy, settings_);
  if (Succeeded(saved)) saved = SaveJobs(*copy, (*jobs_)[0], jobs_->Saved(), modules_);
  if (Failed(saved)) return saved;
  return ExportRegFile(*copy, Format("%s\\%s", kLocalMachine, kSettingsKey), regFile);
}

}  // namespace ts5
