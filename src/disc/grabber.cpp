#include "disc/grabber.h"

#include <chrono>
#include <map>
#include <optional>
#include <utility>

#include "audio/encode/encode.h"
#include "audio/encode/encoder.h"
#include "audio/encode/texts.h"
#include "audio/tags/attribute_names.h"
#include "audio/wave_file.h"
#include "disc/disc_codes.h"
#include "disc/disc_memory.h"
#include "disc/disc_session.h"
#include "disc/engine_reason.h"
#include "disc/grab_parameters.h"
#include "disc/grabbed_sheet.h"
#include "disc/pause_search.h"
#include "disc/texts.h"
#include "disc/track_file.h"
#include "disc/track_texts.h"
#include "frame/cd_tracks.h"
#include "frame/item_run.h"
#include "frame/run.h"
#include "frame/run_target.h"
#include "frame/target_naming.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/disc/claimed_drive.h"
#include "platform/files/digest.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5::disc {
namespace {

constexpr std::string_view kCatalogueAttribute = "WM/CatalogNumber";

// A drive with its disc, held for the run.
struct OpenSource {
  ClaimedDrive held;
  CdDrive& drive = held.drive;
  DiscToc toc;
  TrackReader reader;

  OpenSource(ClaimedDrive opened, DiscToc contents, std::int32_t offset)
      : held(std::move(opened)),
        toc(std::move(contents)),
        reader(drive, Lba{static_cast<std::int32_t>(toc.leadOut)}, offset) {}

  // What is said of the disc, asked when it is needed.
  [[nodiscard]] const CdText& Text() {
    if (!text_) text_ = DiscMemory().Completed(toc, drive.ReadCdText());
    return *text_;
  }
  [[nodiscard]] const std::string& Catalogue() {
    if (!catalogue_) catalogue_ = drive.ReadCatalogue();
    return *catalogue_;
  }

 private:
  std::optional<CdText> text_;
  std::optional<std::string> catalogue_;
};

// How the file of a track is named.
TargetRule TargetRuleOf(const GrabParameters& parameters, int track) {
  const encode::Encoder* const encoder =
      parameters.encode ? encode::EncoderOf(parameters.encodeSettings) : nullptr;
  TargetRule rule{.extension = encoder == nullptr ? "wav" : std::string(encoder->extension),
                  .formatKept = false};
  rule.name = parameters.NameOf(track);
  return rule;
}

constexpr double kReadingPart = 0.5;  // of the work on a track that is compressed
constexpr int kHiddenTrack = 0;       // what lies before the first track

// A piece of the disc: a track, or what is hidden before the first one.
struct Piece {
  int number = 0;
  Lba first = {};
  std::uint32_t sectors = 0;
};

// Where a piece goes and what came of it.
struct PieceTarget {
  StagedFile& file;
  std::function<void(double)> progress;
  std::int32_t number = 0;  // of an engine's error
  std::string line = {};    // what is said of that
  bool keep = false;        // in place although something failed
};

class GrabRun {
 public:
  GrabRun(Run& run, const GrabParameters& parameters)
      : run_(run), parameters_(parameters), naming_(run.GetJob(), run.Destination(), run.Files()) {}

  void Execute() {
    ItemFilter filter;
    filter.convert = [this](ItemWork& work) { return Grab(work); };
    if (parameters_.encode) run_.Result().titles.labels[0] = texts::CountTracksCompressed;
    RunItems(run_, filter);
    if (source_ && parameters_.hidden && !run_.Cancelled()) GrabHidden();
    if (run_.Result().cancelled || run_.CancelRequest() != kNoCancel)
      run_.StatusText(Text(texts::GrabbingStopped));
    if (source_) {
      if (parameters_.cueSheet && !source_->drive.DiscChanged()) WriteCueSheet();
      RememberNames();
      if (parameters_.eject) (void)source_->drive.Eject();
    }
    run_.Result().remarks = run_.Remarks();
  }

 private:
  // The drive of a track; nothing, with the code, when it cannot be used.
  OpenSource* Open(const CdTrackPlace& place, Outcome& failure) {
    if (source_ && path_ == place.drive.path) return source_.get();
    source_.reset();
    auto opened = OpenSourceDrive(run_, place.drive.path);
    if (!opened) {
      failure = static_cast<Outcome>(opened.error().code);
      return nullptr;
    }
    auto toc = opened->drive.ReadToc([this] { return run_.Cancelled(); });
    if (!toc) {
      run_.StatusText(Text(texts::SourceDiscNotRead));
      failure =
          toc.error() == Outcome::Cancelled ? Outcome::Cancelled : static_cast<Outcome>(code::kDriveFailed);
      return nullptr;
    }
    (void)opened->drive.SetSpeed(kGrabSpeeds.at(static_cast<std::size_t>(parameters_.speed)));
    path_ = place.drive.path;
    source_ = std::make_unique<OpenSource>(*std::move(opened), *std::move(toc), parameters_.offset);
    return source_.get();
  }

  Outcome Grab(ItemWork& work) {
    const auto place = FindCdTrack(work.source);
    if (!place) return static_cast<Outcome>(code::kDriveNotOpened);
    Outcome failure = Outcome::Success;
    OpenSource* const source = Open(*place, failure);
    if (source == nullptr) return failure;
    PieceTarget target{work.target, work.progress};
    const TocTrack* const track = source->toc.Find(place->number);
    const bool audio = track != nullptr && track->audio;
    const Outcome grabbed =
        audio
            ? GrabPiece({place->number, Lba{static_cast<std::int32_t>(track->start)}, track->sectors}, target)
            : NotRead(target, engine::kSectorsUnreadable);
    work.number = target.number;
    work.line = target.line;
    work.keepTarget = target.keep;
    return grabbed;
  }

  Outcome GrabPiece(const Piece& piece, PieceTarget& target) {
    run_.StatusText(Format(Text(texts::ReadingTrack), std::to_string(piece.number)));
    const auto begin = std::chrono::steady_clock::now();
    const std::uint32_t doubtful = source_->reader.Doubtful();
    std::optional<TemporaryFile> raw;
    std::optional<StagedFile> rawTarget;
    if (parameters_.encode) {
      auto made = TemporaryFile::Create(kTemporaryPrefix, parameters_.folder, ".wav");
      auto staged = made ? StagedFile::Create(made->Path()) : Failure(made.error());
      if (!staged) return NotRead(target, engine::kNotCreated);
      raw = *std::move(made);
      rawTarget = *std::move(staged);
    }
    Crc32 crc;
    const std::uint32_t error = ReadPiece(piece, rawTarget ? *rawTarget : target.file, target.progress, crc);
    if (error == engine::kStopped) return Outcome::Cancelled;
    if (error != 0) return NotRead(target, error);
    const std::uint32_t bad = source_->reader.Doubtful() - doubtful;
    if (bad > 0) run_.AddStatus({code::kUnreliable, false, 0});
    SayRead(piece, begin, crc, bad);
    if (!rawTarget) return Outcome::Success;
    if (Failed(rawTarget->Commit())) return NotRead(target, engine::kChunkNotClosed);
    return Compress(piece, raw->Path(), target);
  }

  std::uint32_t ReadPiece(const Piece& piece, StagedFile& file, const std::function<void(double)>& progress,
                          Crc32& crc) {
    const std::uint64_t bytes = std::uint64_t{piece.sectors} * kAudioSectorBytes;
    auto wave = WaveFile::CreateIn(file, AudioCdFormat(), parameters_.trim ? 0 : bytes);
    if (!wave) return engine::kHeaderNotWritten;
    const double part = parameters_.encode ? kReadingPart : 1;
    TrackFileEvents events;
    events.stopped = [this] { return run_.ConfirmStop(Text(texts::AskStopGrabbing)); };
    events.status = [this](std::string_view text) { run_.StatusText(text); };
    events.progress = [&progress, part](double fraction) { progress(part * fraction); };
    const auto sound = RangeSound(source_->reader, piece.first, piece.sectors);
    return ReadTrackToFile(*sound, {piece.number, piece.sectors, parameters_.trim, &crc}, *std::move(wave),
                           events);
  }

  void SayRead(const Piece& piece, std::chrono::steady_clock::time_point begin, const Crc32& crc,
               std::uint32_t bad) {
    const auto took =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin)
            .count();
    run_.StatusText(Text(texts::TrackWasRead));
    run_.StatusText(
        Format(Text(texts::TrackReadHead), std::to_string(piece.number)) +
        Format(Text(texts::TrackReadTail), piece.number, took / 60'000, took / 1000 % 60, took % 1000));
    run_.ProtocolLine(Format(Text(texts::GrabProtocol), piece.number, piece.sectors, crc.Text(), bad));
  }

  Outcome Compress(const Piece& piece, const std::string& raw, PieceTarget& target) {
    run_.StatusText(Text(texts::CompressingTrack));
    const encode::EncodeSettings& settings = parameters_.encodeSettings;
    const WorkWatch watch{
        [this] { return run_.ConfirmStop(Text(texts::AskStopGrabbing)); },
        [&target](double fraction) { target.progress(kReadingPart + (1 - kReadingPart) * fraction); }};
    auto source = encode::EncodingSource::Open(raw, settings);
    if (!source) return source.error();
    if (const Outcome encoded = encode::EncodeFile(*source, target.file, settings, watch); Failed(encoded))
      return encoded;
    const std::string& made = target.file.TemporaryPath();
    if (encode::WantsProof(settings)) {
      if (const Outcome proved = encode::ProveEncoding(*source, made, settings, watch); Failed(proved))
        return proved;
    }
    const Outcome written =
        encode::WriteEncodedAttributes(*source, made, settings, AttributesOf(piece.number),
                                       static_cast<unsigned>(run_.GetSettings().id3Version));
    target.keep = written == Outcome::AttributesNotWritten;
    return written;
  }

  // The job's, and what the disc says where they say nothing.
  [[nodiscard]] tags::Attributes AttributesOf(int track) {
    tags::Attributes attributes = parameters_.attributes;
    const auto add = [&](std::string_view name, const std::string& value) {
      if (value.empty() || tags::FindAttribute(attributes, name) != nullptr) return;
      tags::Attribute attribute = tags::NewAttribute(name);
      attribute.value = value;
      attribute.selected = true;
      attributes.push_back(std::move(attribute));
    };
    const CdText& text = source_->Text();
    const CdText::Entry entry = text.Track(track);
    add("Title", track == kHiddenTrack ? std::string(Text(texts::HiddenTrack)) : entry.title);
    add("Author", entry.performer.empty() ? text.disc.performer : entry.performer);
    add("WM/AlbumTitle", text.disc.title);
    add("WM/TrackNumber", std::to_string(track));
    if (track != kHiddenTrack) add("WM/ISRC", source_->drive.ReadIsrc(track));
    add(kCatalogueAttribute, source_->Catalogue());
    return attributes;
  }

  Outcome NotRead(PieceTarget& target, std::uint32_t error) {
    run_.StatusText(Text(texts::TrackNotRead));
    target.number = static_cast<std::int32_t>(error);
    target.line = code::RemarkText(code::kTrackNotRead, target.number);
    if (const auto reason = ReasonOf(error)) target.line += " " + std::string(Text(*reason));
    return static_cast<Outcome>(code::kTrackNotRead);
  }

  // Where the files of this run are.
  [[nodiscard]] std::string Folder() const {
    for (const RunItem& item : run_.Result().items)
      if (item.code >= 0 && !item.destination.empty()) return std::string(DirectoryOf(item.destination));
    return {};
  }

  // A target beside the files, with a number when its name is taken and may not be replaced: nobody is asked
  // at the end of a run.
  [[nodiscard]] PlannedTarget NameBeside(std::string_view file) {
    PlannedTarget target = naming_.Chosen(JoinPath(Folder(), file));
    if (target.taking != Taking::Ask) return target;
    target.taking = Taking::Number;
    if (run_.Files().exists(target.name) && !naming_.Renumber(target)) target.code = Outcome::TargetFailed;
    return target;
  }

  // The files of the run by their tracks.
  [[nodiscard]] std::map<int, std::string> Grabbed() const {
    std::map<int, std::string> files;
    for (const RunItem& item : run_.Result().items) {
      if (item.code < 0 || item.destination.empty()) continue;
      const bool hidden = item.source == Text(texts::HiddenTrack);
      const auto number = hidden ? std::optional(kHiddenTrack) : TrackNumberOf(FileNameOf(item.source));
      if (number) files[*number] = std::string(FileNameOf(item.destination));
    }
    return files;
  }

  void WriteCueSheet() {
    const std::map<int, std::string> files = Grabbed();
    if (files.empty()) return;
    std::vector<SheetTrack> tracks;
    for (const auto& [number, file] : files) {
      if (number == kHiddenTrack) continue;
      const TocTrack* const toc = source_->toc.Find(number);
      SheetTrack track{number, file};
      track.text = source_->Text().Track(number);
      track.isrc = source_->drive.ReadIsrc(number);
      track.control = toc == nullptr ? std::uint8_t{0} : toc->control;
      const TocTrack* const before = source_->toc.Find(number - 1);
      // In the file of the track before, which ends where this one begins.
      if (before != nullptr && !parameters_.trim && files.contains(number - 1)) {
        const std::uint32_t pause =
            FindPause(source_->drive, source_->toc, number, [this] { return run_.Cancelled(); }).value_or(0);
        if (pause > 0 && pause < before->sectors) track.pauseInFileBefore = before->sectors - pause;
      }
      tracks.push_back(std::move(track));
    }
    const auto hidden = files.find(kHiddenTrack);
    const std::string sheet =
        GrabbedSheet({source_->Catalogue(), source_->Text().disc,
                      hidden == files.end() ? std::string() : hidden->second, std::move(tracks)});
    PlannedTarget target = NameBeside("CD.cue");
    auto file = Succeeded(target.code) ? StagedFile::Create(target.name) : Failure(target.code);
    Outcome written = file ? file->Write(AsBytes(sheet)) : file.error();
    if (Succeeded(written)) {
      const auto put = PutTarget(run_, *file, std::move(target), naming_, {});
      if (!put) written = put.error();
    }
    if (Failed(written)) run_.AddCode(written);
  }

  // What lies before the first track and is in no table of contents.
  void GrabHidden() {
    const std::uint32_t sectors = source_->toc.tracks.front().start;
    if (sectors == 0) return;
    const TargetRule rule = TargetRuleOf(parameters_, kHiddenTrack);
    PlannedTarget place = NameBeside(WithExtension(rule.name, rule.extension));
    RunItem item{.source = std::string(Text(texts::HiddenTrack)), .destination = place.name};
    auto file = Succeeded(place.code) ? StagedFile::Create(place.name) : Failure(place.code);
    if (!file) {
      item.code = Code(file.error());
      run_.AddCode(file.error());
    } else {
      const auto all = static_cast<std::uint32_t>(run_.ItemCount()) + 1;
      PieceTarget target{*file, [this, all](double fraction) { run_.Progress(all, all, fraction); }};
      Outcome grabbed = GrabPiece({kHiddenTrack, Lba{0}, sectors}, target);
      if (Succeeded(grabbed) || target.keep) {
        auto put = PutTarget(run_, *file, std::move(place), naming_, {});
        put ? void(item.destination = *std::move(put)) : void(grabbed = put.error());
      }
      item.code = Code(grabbed);
      item.remark = target.line;
      if (Failed(grabbed)) run_.AddStatus({item.code, false, target.number, target.line});
    }
    ++run_.Result().counts[item.code >= 0 ? 0 : 1];
    run_.Result().items.push_back(std::move(item));
  }

  // The names that the user gave the tracks are known when the disc comes again.
  void RememberNames() {
    if (!parameters_.useNames) return;
    CdText text;
    text.firstTrack = source_->toc.tracks.front().number;
    for (const TocTrack& track : source_->toc.tracks) {
      const auto index = static_cast<std::size_t>(track.number - 1);
      const bool named = index < parameters_.names.size() && !parameters_.names[index].empty() &&
                         parameters_.names[index] != Format(Text(texts::GrabName), track.number);
      text.tracks.push_back(named ? TextOfName(parameters_.names[index]) : CdText::Entry{});
    }
    // Not to know it next time is no failure of this run.
    (void)DiscMemory().Remember(source_->toc, text);
  }

  Run& run_;
  const GrabParameters& parameters_;
  TargetNaming naming_;  // of what comes beside the tracks
  std::string path_;
  std::unique_ptr<OpenSource> source_;
};

}  // namespace

FilterModule GrabberModule() {
  ModuleOf<GrabParameters> module;
  module.id = FilterId::CdGrabber;
  module.fields = GrabFields();
  module.run = [](Run& run, const GrabParameters& own) { GrabRun(run, own).Execute(); };
  module.remarks = code::Remarks();
  module.target = [](const GrabParameters& grab, const std::string& source) {
    TargetRule rule = TargetRuleOf(grab, 0);
    const auto number = TrackNumberOf(FileNameOf(source));
    rule.name = number ? grab.NameOf(*number) : std::string();
    return rule;
  };
  module.missing = [](const GrabParameters& grab) -> std::optional<TextId> {
    if (grab.encode && encode::EncoderOf(grab.encodeSettings) == nullptr) return texts::EncodeNoEncoder;
    return std::nullopt;
  };
  module.stop.status = texts::Stopping;
  return MakeModule(std::move(module));
}

}  // namespace ts5::disc
