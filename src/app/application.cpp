#include "app/application.h"

#include <QPrinterInfo>
#include <optional>
#include <utility>

#include "app/filter_modules.h"
#include "app/texts.h"
#include "frame/settings_store.h"
#include "platform/audio_in.h"
#include "platform/audio_out.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "platform/midi_out.h"
#include "search/texts.h"

namespace ts5 {
namespace {

std::vector<std::string> Printers() {
  std::vector<std::string> names;
  for (const QString& name : QPrinterInfo::availablePrinterNames()) names.push_back(name.toStdString());
  names.emplace_back(Text(texts::PdfPrinter));  // built in, so that there is always one
  return names;
}

}  // namespace

Application::Application(const StartOptions& options, const std::function<void(TextId)>& announce)
    : announce_(announce ? announce : [](TextId) {}),
      registryPath_(options.registryPath),
      modules_(options.modules ? options.modules : ModuleFinder(&FindModule)),
      runner_(modules_) {
  OpenRegistry(registryPath_);
  siblings_ = FindSiblings(*registry_);

  announce_(texts::StartDrives);
  volumes_ = options.volumes ? *options.volumes : VolumeTable::OfThisMachine();
  announce_(texts::StartAudioInputs);
  announce_(texts::StartAudioOutputs);
  devices_ = options.devices.value_or(DeviceLists{});
  if (!options.devices) {
    devices_.audioInputs = AudioInputDevices();
    devices_.audioOutputs = AudioOutputDevices();
  }
  announce_(texts::StartMidiDevices);
  if (!options.devices) devices_.midiOutputs = MidiOutputDevices();
  announce_(texts::StartCodecs);
  announce_(texts::StartPrinters);
  if (!options.devices) devices_.printers = Printers();
  settings_ = LoadSettings(*registry_, DefaultSettingsGround());
  CheckRecordMixer(settings_, [this](std::int32_t line) -> std::optional<std::string> {
    const std::vector<std::string>& inputs = devices_.audioInputs;
    if (std::cmp_greater_equal(line, inputs.size())) return std::nullopt;
    return inputs[static_cast<std::size_t>(line)];
  });
  announce_(texts::StartMp3Interfaces);

  announce_(texts::StartMainWindow);
  JobSurroundings surroundings = JobSurroundingsOf(volumes_, modules_);
  surroundings.audioDevices = devices_.audioOutputs.size();
  surroundings.midiDevices = devices_.midiOutputs.size();
  auto stored = LoadJobs(*registry_, surroundings);
  if (!stored) {
    // Jobs that could not be read must not be replaced by what is made up now.
    notices_.push_back(RegistryFailureText(stored.error(), registryPath_));
    jobsReadable_ = false;
    stored = StoredJobs{JobFromValues({}, 0, surroundings), {}};
  }
  jobs_ = std::make_unique<Jobs>(std::move(*stored), modules_);
}

Application::~Application() = default;

void Application::OpenRegistry(const std::string& path) {
  auto opened = Registry::Open(path);
  if (!opened) {
    // The program works without its store; what is set up lasts until the end then.
    notices_.push_back(RegistryFailureText(opened.error(), path));
    opened = Registry::Open(kRegistryInMemory);
    registryPath_ = kRegistryInMemory;
  }
  registry_.emplace(std::move(*opened));
  if (!registry_->Notice().empty()) notices_.push_back(registry_->Notice());
}

std::optional<std::string> Application::Save() {
  const Outcome outcome = registry_->Transaction([this] {
    const Outcome settings = SaveSettings(*registry_, settings_);
    if (Failed(settings) || !jobsReadable_) return settings;
    return SaveJobs(*registry_, (*jobs_)[0], jobs_->Saved(), modules_);
  });
  if (Failed(outcome)) return RegistryFailureText(outcome, registryPath_);
  return std::nullopt;
}

}  // namespace ts5
