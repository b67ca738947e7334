#include "disc/intermediate.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "audio/media_probe.h"
#include "audio/midi_recording.h"
#include "audio/midi_to_wave.h"
#include "audio/texts.h"
#include "audio/wave_converter.h"
#include "audio/wave_file.h"
#include "disc/disc_codes.h"
#include "disc/sound_source.h"
#include "disc/texts.h"
#include "disc/track_file.h"
#include "frame/cd_tracks.h"
#include "frame/file_types.h"
#include "platform/base/text.h"
#include "platform/disc/claimed_drive.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5::disc {
namespace {

namespace fs = std::filesystem;

std::string SystemFolder() {
  std::error_code error;
  const std::string path = fs::temp_directory_path(error).string();
  return error ? std::string("/tmp") : path;
}

DiscOutcome FromOutcome(Outcome outcome) {
  return {Failed(outcome) ? Code(outcome) : 0, 0};
}

}  // namespace

bool IsMidiSource(const std::string& path) {
  const std::string extension = ToLower(ExtensionOf(path));
  return extension == "mid" || extension == "rmi" || extension == "rdl";
}

Intermediate::Intermediate(Run& run, const BurnParameters& parameters)
    : run_(run),
      parameters_(parameters),
      folder_(parameters.systemFolder ? SystemFolder() : parameters.folder) {
  // Files that are there already belong to somebody: then these have a folder of their own.
  for (std::size_t i = 0; i < run.ItemCount(); ++i) {
    if (!FileExists(NameOf(i))) continue;
    std::string path = JoinPath(folder_, std::string(kTemporaryPrefix) + "XXXXXX");
    if (::mkdtemp(path.data()) == nullptr) break;
    folder_ = path;
    ownFolder_ = true;
    break;
  }
}

Intermediate::~Intermediate() {
  if (!parameters_.deleteIntermediate) return;
  for (const std::string& name : made_)
    if (FileExists(name)) (void)RemoveFile(name);
  std::error_code error;
  if (ownFolder_) fs::remove(folder_, error);
}

std::string Intermediate::NameOf(std::size_t index) {
  std::string prefix = parameters_.prefix.empty() ? DefaultPrefix(run_.JobNumber()) : parameters_.prefix;
  std::ranges::replace(prefix, '/', '_');  // it is no way out of the folder
  return JoinPath(folder_, Format("%s%03i.wav", prefix, index + 1));
}

bool Intermediate::ConfirmStop() {
  return run_.ConfirmStop(Text(parameters_.atOnce ? texts::AskStopDisc : texts::AskStopBurning));
}

WorkWatch Intermediate::Watch(std::size_t index) {
  return {[this] { return ConfirmStop(); },
          [this, index](double fraction) {
            run_.Progress(static_cast<std::uint32_t>(index + 1), static_cast<std::uint32_t>(run_.ItemCount()),
                          fraction);
          }};
}

PreparedFile Intermediate::Prepare(std::size_t index) {
  PreparedFile file;
  const auto entry = ItemEntry(run_.GetJob(), index);
  file.source = run_.Source(index);
  file.name = file.source;
  file.pause = entry ? entry->pause * kSectorsPerSecond : 0;
  file.text = TrackText(parameters_.texts, file.source);
  if (file.text.performer.empty()) file.text.performer = parameters_.performer;
  const std::string target = NameOf(index);
  const bool there = FileExists(target);
  file.outcome = Make(file, target, index);
  if (file.outcome.Good() && parameters_.Normalising() == NormaliseMode::Each)
    file.outcome = NormaliseOne(file, target);
  if (!file.original || (!there && FileExists(target))) made_.push_back(target);
  if (file.outcome.Good()) {
    const auto bytes = WaveSoundBytes(file.name);
    if (!bytes) {
      file.outcome = FromOutcome(bytes.error());
    } else if (*bytes == 0) {
      file.outcome = {Code(Outcome::WrongFormat), 0};
    } else {
      file.bytes = *bytes;
      file.usable = true;
    }
  }
  // What could not be prepared leaves nothing.
  if (!file.usable && !there && FileExists(target)) (void)RemoveFile(target);
  return file;
}

DiscOutcome Intermediate::Make(PreparedFile& file, const std::string& target, std::size_t index) {
  const std::string name(FileNameOf(file.source));
  if (!FileExists(file.source) && FindCdTrack(file.source)) {
    run_.StatusText(Format(Text(texts::ReadingSource), file.source));
    const DiscOutcome read = ReadTrack(file.source, target, index);
    run_.StatusText(Format(Text(read.Good() ? texts::SourceRead : texts::SourceNotRead), file.source));
    if (read.Good()) {
      file.name = target;
      file.original = false;
    }
    return read;
  }
  if (!FileExists(file.source)) {
    run_.StatusText(Format(Text(texts::SourceNotThere), name));
    return {code::kSourceMissing, 0};
  }
  const WorkWatch watch = Watch(index);
  if (IsMidiSource(file.source)) {
    run_.StatusText(Format(Text(texts::ConvertingMidi), name));
    const DiscOutcome made = ConvertMidi(file.source, target, watch);
    run_.StatusText(Format(Text(made.Good() ? texts::MidiConverted : texts::MidiNotConverted), name));
    if (made.Good()) {
      file.name = target;
      file.original = false;
    }
    return made;
  }
  const MediaProbe probe = ProbeMedia(file.source);
  if (probe.kind == MediaKind::None) {
    run_.StatusText(Format(Text(texts::SourceUnusable), name));
    return {Code(Outcome::WrongFormat), 0};
  }
  if (probe.kind == MediaKind::Wave && WaveSoundBytes(file.source)) {
    run_.StatusText(Format(Text(texts::ConversionNotNecessary), name));
    return {};
  }
  const bool compressed = !IsWaveKind(probe.kind);
  run_.StatusText(Format(Text(compressed ? texts::Decoding : texts::Converting), name));
  const Outcome converted = ConvertWaveFile(file.source, target, AudioCdFormat(), watch);
  if (Failed(converted)) {
    run_.StatusText(Format(Text(texts::NotConverted), name));
    return FromOutcome(converted);
  }
  run_.StatusText(Format(Text(compressed ? texts::Decoded : texts::ConvertedFile), name));
  file.name = target;
  file.original = false;
  return {};
}

DiscOutcome Intermediate::ReadTrack(const std::string& source, const std::string& target, std::size_t index) {
  const auto failed = [](std::uint32_t number) {
    return DiscOutcome{code::kTrackNotRead, static_cast<std::int32_t>(number)};
  };
  const auto place = FindCdTrack(source);
  if (!place) return failed(engine::kSectorsUnreadable);
  auto opened = ClaimedDrive::Open(place->drive.path);
  const auto toc =
      opened ? opened->drive.ReadToc([this] { return run_.Cancelled(); }) : Failure(opened.error());
  const TocTrack* const track = toc ? toc->Find(place->number) : nullptr;
  if (track == nullptr || !track->audio) return failed(engine::kSectorsUnreadable);
  auto wave = WaveFile::Create(target, AudioCdFormat(), std::uint64_t{track->sectors} * kAudioSectorBytes);
  if (!wave) return failed(engine::kNotCreated);
  TrackReader reader(opened->drive, Lba{static_cast<std::int32_t>(toc->leadOut)});
  const auto sound = RangeSound(reader, Lba{static_cast<std::int32_t>(track->start)}, track->sectors);
  const std::uint32_t error = ReadTrackToFile(*sound, {place->number, track->sectors}, *std::move(wave),
                                              {[this] { return ConfirmStop(); }, Watch(index).progress,
                                               [this](std::string_view text) { run_.StatusText(text); }});
  if (error == engine::kStopped) return {Code(Outcome::Cancelled), 0};
  if (error != 0) return failed(error);
  if (reader.Doubtful() > 0) run_.AddStatus({code::kUnreliable, false, 0});
  return {};
}

DiscOutcome Intermediate::ConvertMidi(const std::string& source, const std::string& target,
                                      const WorkWatch& watch) {
  if (parameters_.midi.Method() == MidiWaveMethod::Synthesis)
    return FromOutcome(
        RenderMidiFile(source, target, AudioCdFormat(), run_.GetSettings().synthesizerDirectory, watch));
  const RecordingDevices devices =
      RecordingDevicesOf(parameters_.midi, run_.GetSettings().recordMixerName, {});
  auto file = StagedFile::Create(target);
  if (!file) return FromOutcome(file.error());
  const Outcome recorded = RecordMidi(source, *file, AudioCdFormat(), devices, watch);
  switch (recorded) {
    case Outcome::MidiDeviceFailed:
      return {code::kMidiNotInitialised, 0};
    case Outcome::ConverterFailed:
      return {code::kMidiNotStarted, 0};
    case Outcome::ConverterNotOpened:
      return {code::kWaveInput, Code(recorded)};
    case Outcome::EncoderNotStarted:
    case Outcome::EncoderFailed:
      return {code::kWaveInputNotStarted, 0};
    default:
      return FromOutcome(Failed(recorded) ? recorded : file->Commit());
  }
}

DiscOutcome Intermediate::NormaliseOne(PreparedFile& file, const std::string& target) {
  const std::string name(FileNameOf(file.source));
  run_.StatusText(Format(Text(texts::NormaliseFileStart), name));
  const std::vector<std::string> sources{file.name};
  const std::vector<std::string> targets{file.original ? target : std::string()};
  const Outcome outcome = Normalise(sources, targets, 0, 1, Watch(0));
  if (Succeeded(outcome)) {
    run_.StatusText(Format(Text(texts::NormaliseFileDone), name));
    if (file.original) file.name = target;
    file.original = false;
    return {};
  }
  if (outcome == Outcome::NotNecessary) {
    run_.StatusText(Format(Text(texts::NormaliseFileNotNecessary), name));
    return {};
  }
  run_.StatusText(Format(Text(texts::NormaliseFileFailed), name));
  return FromOutcome(outcome);
}

DiscOutcome Intermediate::NormaliseProject(std::vector<PreparedFile>& files) {
  run_.StatusText(Text(texts::NormaliseProjectStart));
  std::vector<std::string> sources;
  std::vector<std::string> targets;
  for (std::size_t i = 0; i < files.size(); ++i) {
    sources.push_back(files[i].usable ? files[i].name : std::string());
    targets.push_back(files[i].usable && files[i].original ? NameOf(i) : std::string());
  }
  const Outcome outcome = Normalise(sources, targets, kWholeProject, sources.size(), Watch(0));
  if (outcome == Outcome::NotNecessary) {
    run_.StatusText(Text(texts::NormaliseProjectNotNecessary));
    return {};
  }
  if (Failed(outcome)) {
    run_.StatusText(Text(texts::NormaliseProjectFailed));
    return FromOutcome(outcome);
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (targets[i].empty()) continue;
    files[i].name = targets[i];
    files[i].original = false;
    made_.push_back(targets[i]);
  }
  run_.StatusText(Text(texts::NormaliseProjectDone));
  return {};
}

}  // namespace ts5::disc
