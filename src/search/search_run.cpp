#include "search/search_run.h"

#include <algorithm>
#include <array>
#include <optional>
#include <thread>
#include <utility>

#include "frame/failure_reason.h"
#include "frame/run_target.h"
#include "frame/target_naming.h"
#include "frame/texts.h"
#include "platform/base/casts.h"
#include "platform/base/clock.h"
#include "platform/files/fault.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "search/directory_walk.h"
#include "search/hit_texts.h"
#include "search/midi_search.h"
#include "search/result_file.h"
#include "search/score_search.h"
#include "search/texts.h"

namespace ts5 {
namespace {

constexpr unsigned kMostThreads = 16;

constexpr std::array kRemarks = {
    Remark{-104, texts::RemarkWrongFormat}, Remark{-100, texts::RemarkReadFailed},
    Remark{-101, texts::RemarkWriteFailed}, Remark{-5, texts::RemarkCancelled},
    Remark{-2, texts::SearchOutOfMemory},   Remark{-200, texts::SearchTargetFailed},
    Remark{-201, texts::NoTargetName},      Remark{-300, texts::SearchSourceFailed},
    Remark{-601, texts::RemarkDamagedMidi}, Remark{-1400, texts::SearchXmlFailed},
};

// What ends the run; every other code counts its file as unsuitable.
bool EndsRun(Outcome code) {
  return code == Outcome::OutOfMemory || code == Outcome::Cancelled || code == Outcome::WriteFailed;
}

class SearchRun {
 public:
  SearchRun(Run& run, const SearchParameters& parameters, const FileSearch& search, unsigned threads)
      : run_(run),
        parameters_(parameters),
        search_(search),
        threads_(threads),
        naming_(run.GetJob(), run.Destination(), run.Files()) {}

  void Execute() {
    record_ = RecordAtStart(SearchKindOf(run_.GetJob().filter), parameters_);
    last_ = OpenTarget();
    if (Succeeded(last_)) {
      SearchFiles();
      CloseTarget();
    } else if (last_ != Outcome::Cancelled) {
      BookTarget(last_);
    }
    FillResult();
  }

 private:
  // What failed is the target and none of the sources.
  void BookTarget(Outcome code) {
    const std::string& name = target_.name.empty() ? run_.GetJob().destinationName : target_.name;
    run_.Result().items.push_back(
        {.destination = name, .code = Code(code), .reason = FailureReason(code, {}, name, TakeFault())});
  }

  Outcome OpenTarget() {
    ForgetFault();
    const Job& job = run_.GetJob();
    if (job.destinationIsScreen) return Outcome::Success;
    if (job.destinationName.empty()) return Outcome::TargetNameMissing;
    target_ = ResultTarget(naming_, job, run_.Destination());
    if (Failed(target_.code)) return target_.code;
    const std::string& name = target_.name;
    if (IsDirectory(name) || IsSearched(name)) return Outcome::TargetFailed;
    (void)ClearAbandonedFiles(std::string(DirectoryOf(name)));
    bool append = false;
    if (run_.Files().exists(name)) {
      const Answer answer = AskAboutOld(name);
      if (answer == Answer::Cancelled) return Outcome::Cancelled;
      append = answer == Answer::No;
      target_.taking = Taking::Replace;
      old_ = IdentityOf(name);
    } else {
      target_.taking = Taking::Number;  // should another program make a file of that name meanwhile
    }
    auto writer = ResultFileWriter::Create(name, append, record_);
    if (!writer) return writer.error() == Outcome::WriteFailed ? Outcome::WriteFailed : Outcome::TargetFailed;
    writer_.emplace(std::move(*writer));
    return Outcome::Success;
  }

  // Yes replaces what is there, No appends to it. What is no result file is never replaced unasked, and
  // nothing is appended to it.
  Answer AskAboutOld(const std::string& name) {
    if (IsResultFile(name)) {
      if (target_.taking == Taking::Replace) return Answer::Yes;
      return run_.Ask(
          {.text = std::string(Text(texts::ResultFileExists)), .buttons = QuestionButtons::YesNoCancel});
    }
    run_.StatusText(name);
    const Answer answer = run_.Ask({.text = std::string(Text(texts::AskOverwriteTarget)),
                                    .icon = MessageIcon::Exclamation,
                                    .preset = Answer::No});
    return answer == Answer::Yes ? Answer::Yes : Answer::Cancelled;
  }

  // A result file never takes the place of a file that the search of a tree would come to.
  bool IsSearched(const std::string& name) const {
    if (!Walks() || !FileExists(name)) return false;
    const HitSink ignore = [](const SearchHit&) { return Outcome::Success; };
    return Succeeded(search_(name, ignore, [this] { return run_.Cancelled(); }).code);
  }

  bool Walks() const { return run_.ItemCount() == 0 && run_.GetJob().Mode() == SourceMode::Directory; }

  // The result file itself, the old one and the one that is being written, may lie in the tree.
  bool IsTarget(const std::string& path) const {
    if (!writer_) return false;
    for (const std::string& own : {target_.name, writer_->TemporaryPath()}) {
      if (FileNameOf(path) == FileNameOf(own) && IsSameFile(path, own)) return true;
    }
    return false;
  }

  // One that is of this run's share; walked counts all files of the tree.
  std::optional<std::string> NextOf(DirectoryWalk& walk, std::uint64_t& walked) const {
    auto path = walk.Next();
    while (path && (!run_.Share().Takes(walked++) || IsTarget(*path))) path = walk.Next();
    return path;
  }

  void SearchFiles() {
    const std::size_t count = run_.ItemCount();
    const CancelCheck cancelled = [this] { return run_.Cancelled(); };
    DirectoryWalk walk(run_.GetJob().directory.path, cancelled);
    std::size_t taken = 0;
    std::uint64_t walked = 0;
    OrderedSearchEvents events;
    events.next = [&]() -> std::optional<std::string> {
      if (run_.Cancelled()) return std::nullopt;
      if (Walks()) return NextOf(walk, walked);
      return taken < count ? std::optional(run_.Source(taken++)) : std::nullopt;
    };
    events.begin = [&](const std::string& path) {
      const bool whole = run_.GetSettings().searchWholePath;
      run_.StatusText(whole ? std::string_view(path) : FileNameOf(path));
      run_.Progress(ClampTo<std::uint32_t>(run_.Result().items.size() + 1), ClampTo<std::uint32_t>(count));
    };
    events.hit = [this](const SearchHit& hit) { return writer_ ? writer_->WriteHit(hit) : run_.Hit(hit); };
    events.end = [this](const std::string& path, const SearchOutcome& outcome) {
      return Count(path, outcome);
    };
    SearchInOrder([this](const std::string& path, const HitSink& sink,
                         const CancelCheck& stopped) { return SearchFile(path, sink, stopped); },
                  events, cancelled, threads_);
    if (run_.Cancelled()) last_ = Outcome::Cancelled;
  }

  SearchOutcome SearchFile(const std::string& path, const HitSink& sink, const CancelCheck& stopped) const {
    ForgetFault();
    SearchOutcome outcome{Outcome::SourceFailed, 0};
    if (IsUsablePath(path)) outcome = search_(path, sink, stopped);
    outcome.reason = FailureReason(outcome.code, path, target_.name, TakeFault());
    return outcome;
  }

  bool Count(const std::string& path, const SearchOutcome& outcome) {
    const bool ends = EndsRun(outcome.code);
    last_ = ends ? outcome.code : Outcome::Success;
    const std::string& target = target_.name;
    const bool ofTarget = outcome.code == Outcome::WriteFailed;  // not the fault of the file that is searched
    run_.Result().items.push_back({.source = ofTarget ? std::string() : path,
                                   .destination = target,
                                   .code = Code(outcome.code),
                                   .reason = outcome.reason});
    if (ends) return false;
    if (Failed(outcome.code)) run_.AddCode(outcome.code);
    if (Succeeded(outcome.code)) {
      ++record_.statistics.searched;
      record_.statistics.hits += outcome.hits;
    } else {
      ++record_.statistics.unsuitable;
    }
    return !run_.Cancelled();
  }

  void CloseTarget() {
    record_.end = LocalNow();
    const bool failed = last_ == Outcome::OutOfMemory || last_ == Outcome::WriteFailed;
    record_.ending = failed             ? SearchEnd::Failed
                     : run_.Cancelled() ? SearchEnd::Cancelled
                                        : SearchEnd::Finished;
    if (!writer_ || last_ == Outcome::WriteFailed) return;
    ForgetFault();
    const Outcome finished = writer_->Finish(record_, [this](StagedFile& file) { return PutInPlace(file); });
    if (Failed(finished)) {
      last_ = finished;
      BookTarget(finished);
    }
  }

  // The name may be another one than at the beginning: what another program made meanwhile stays.
  Outcome PutInPlace(StagedFile& file) {
    if (target_.taking == Taking::Replace && IdentityOf(target_.name) != old_)
      target_.taking = Taking::Number;
    const auto taken = PutTarget(run_, file, target_, naming_, {});
    if (!taken) return taken.error();
    for (RunItem& item : run_.Result().items) item.destination = *taken;
    return Outcome::Success;
  }

  void FillResult() {
    const SearchStatistics& counts = record_.statistics;
    RunResult& result = run_.Result();
    result.counts = {counts.searched + counts.unsuitable, ClampTo<std::uint32_t>(counts.hits),
                     counts.unsuitable};
    result.payload = record_;
    result.cancelled = last_ == Outcome::Cancelled;
    if (Failed(last_)) run_.AddCode(last_);
    result.remarks = run_.Remarks();
  }

  Run& run_;
  const SearchParameters& parameters_;
  const FileSearch& search_;
  unsigned threads_;
  SearchRecord record_;
  TargetNaming naming_;
  PlannedTarget target_;             // without a name on the screen
  std::optional<FileIdentity> old_;  // what the target replaces
  std::optional<ResultFileWriter> writer_;
  Outcome last_ = Outcome::Success;  // what ended the run, or its target's fate
};

using SearchFunction = SearchOutcome (*)(const std::string& path, const MelodyQuery& query,
                                         const HitSink& sink, const CancelCheck& cancelled);

FilterModule SearchModule(FilterId filter, SearchFunction search) {
  const SearchKind kind = SearchKindOf(filter);
  ModuleOf<SearchParameters> module;
  module.id = filter;
  if (kind == SearchKind::Score) module.defaults.options.tolerance = Tolerance::None;
  module.fields = SearchFields(kind);
  module.remarks = kRemarks;
  module.missing = [](const SearchParameters& parameters) -> std::optional<TextId> {
    if (HasMelody(parameters)) return std::nullopt;
    return texts::MelodyMissing;
  };
  module.run = [search](Run& run, const SearchParameters& parameters) {
    MelodyQuery query = {parameters.melody.elements, parameters.options, {}};
    for (const SearchMelody& melody : parameters.more) query.more.push_back(melody.elements);
    const auto one = [&](const std::string& path, const HitSink& sink, const CancelCheck& cancelled) {
      return search(path, query, sink, cancelled);
    };
    RunMelodySearch(run, parameters, one);
  };
  return MakeModule(std::move(module));
}

}  // namespace

void RunMelodySearch(Run& run, const SearchParameters& parameters, const FileSearch& search,
                     unsigned threads) {
  if (threads == 0) threads = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
  SearchRun(run, parameters, search, threads).Execute();
}

SearchRecord RecordAtStart(SearchKind kind, const SearchParameters& parameters) {
  SearchRecord record;
  record.kind = kind;
  record.melodyName = parameters.melody.name;
  for (const SearchMelody& melody : parameters.more) record.melodyName += ", " + melody.name;
  record.notes = static_cast<std::size_t>(
      std::ranges::count_if(parameters.melody.elements, [](const auto& e) { return !IsRest(e); }));
  record.melody = parameters.melody.elements;
  record.clef = parameters.melody.clef;
  record.start = LocalNow();
  return record;
}

FilterModule MidiSearchModule() {
  return SearchModule(FilterId::MidiSearch, SearchMidiFile);
}

FilterModule ScoreSearchModule() {
  return SearchModule(FilterId::ScoreSearch, SearchScoreFile);
}

}  // namespace ts5
