#include "search/search_run.h"

#include <algorithm>
#include <array>
#include <optional>
#include <thread>
#include <utility>

#include "frame/texts.h"
#include "platform/casts.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/paths.h"
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
  SearchRun(Run& run, const FileSearch& search, unsigned threads)
      : run_(run), search_(search), threads_(threads) {}

  void Execute() {
    record_ = RecordAtStart(run_.Module().id, run_.Parameters<SearchParameters>());
    last_ = OpenTarget();
    if (Succeeded(last_)) {
      SearchFiles();
      CloseTarget();
    } else if (last_ != Outcome::Cancelled) {
      run_.Result().items.push_back({"", run_.GetJob().destinationName, Code(last_)});
    }
    FillResult();
  }

 private:
  Outcome OpenTarget() {
    const Job& job = run_.GetJob();
    if (job.destinationIsScreen) return Outcome::Success;
    const std::string& name = job.destinationName;
    if (name.empty()) return Outcome::TargetNameMissing;
    if (IsDirectory(name) || IsSource(name)) return Outcome::TargetFailed;
    bool append = false;
    if (run_.Files().exists(name) && run_.Destination().overwrite != OverwritePolicy::Replace) {
      const Answer answer = run_.Ask(
          {.text = std::string(Text(texts::ResultFileExists)), .buttons = QuestionButtons::YesNoCancel});
      if (answer == Answer::Cancelled) return Outcome::Cancelled;
      append = answer == Answer::No;
    }
    auto writer = ResultFileWriter::Create(name, append, record_);
    if (!writer) return writer.error() == Outcome::WriteFailed ? Outcome::WriteFailed : Outcome::TargetFailed;
    writer_.emplace(std::move(*writer));
    return Outcome::Success;
  }

  // A result file never takes the place of a file that is searched.
  bool IsSource(const std::string& name) const {
    if (!FileExists(name)) return false;
    if (Walks()) {
      const HitSink ignore = [](const SearchHit&) { return Outcome::Success; };
      return Succeeded(search_(name, ignore, [this] { return run_.Cancelled(); }).code);
    }
    for (std::size_t i = 0; i < run_.ItemCount(); ++i) {
      if (IsSameFile(run_.Source(i), name)) return true;
    }
    return false;
  }

  bool Walks() const { return run_.ItemCount() == 0 && run_.GetJob().Mode() == SourceMode::Directory; }

  // The result file itself, the old one and the one that is being written, may lie in the tree.
  bool IsTarget(const std::string& path) const {
    if (!writer_) return false;
    for (const std::string& own : {run_.GetJob().destinationName, writer_->TemporaryPath()}) {
      if (FileNameOf(path) == FileNameOf(own) && IsSameFile(path, own)) return true;
    }
    return false;
  }

  std::optional<std::string> NextOf(DirectoryWalk& walk) const {
    auto path = walk.Next();
    while (path && IsTarget(*path)) path = walk.Next();
    return path;
  }

  void SearchFiles() {
    const std::size_t count = run_.ItemCount();
    const CancelCheck cancelled = [this] { return run_.Cancelled(); };
    DirectoryWalk walk(run_.GetJob().directory.path, cancelled);
    std::size_t taken = 0;
    OrderedSearchEvents events;
    events.next = [&]() -> std::optional<std::string> {
      if (run_.Cancelled()) return std::nullopt;
      if (Walks()) return NextOf(walk);
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
    if (!IsUsablePath(path)) return {Outcome::SourceFailed, 0};
    return search_(path, sink, stopped);
  }

  bool Count(const std::string& path, const SearchOutcome& outcome) {
    last_ = outcome.code;
    const std::string& target = writer_ ? run_.GetJob().destinationName : std::string();
    const bool ofTarget = outcome.code == Outcome::WriteFailed;  // not the fault of the file that is searched
    run_.Result().items.push_back({ofTarget ? std::string() : path, target, Code(outcome.code)});
    if (EndsRun(outcome.code)) return false;
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
    const Outcome finished = writer_->Finish(record_);
    if (Failed(finished)) {
      last_ = finished;
      run_.Result().items.push_back({"", run_.GetJob().destinationName, Code(finished)});
    }
  }

  void FillResult() {
    const SearchStatistics& counts = record_.statistics;
    RunResult& result = run_.Result();
    result.lines[0].count = counts.searched + counts.unsuitable;
    result.lines[1].count = ClampTo<std::uint32_t>(counts.hits);
    result.lines[2].count = counts.unsuitable;
    result.cancelled = last_ == Outcome::Cancelled;
    if (Failed(last_)) run_.AddCode(last_);
    result.remarks = run_.Remarks();
  }

  Run& run_;
  const FileSearch& search_;
  unsigned threads_;
  SearchRecord record_;
  std::optional<ResultFileWriter> writer_;
  Outcome last_ = Outcome::Success;  // decides the remark
};

using SearchFunction = SearchOutcome (*)(const std::string& path, const MelodyQuery& query,
                                         const HitSink& sink, const CancelCheck& cancelled);

FilterModule SearchModule(FilterId filter, SearchFunction search) {
  FilterModule module;
  module.id = filter;
  module.create = [filter] {
    auto parameters = std::make_unique<SearchParameters>();
    if (filter != FilterId::MidiSearch) parameters->options.tolerance = Tolerance::None;
    return parameters;
  };
  module.fields = SearchFields(filter);
  module.remarks = kRemarks;
  module.missing = [](const Job& job) -> std::optional<TextId> {
    if (HasMelody(static_cast<const SearchParameters&>(*job.parameters))) return std::nullopt;
    return texts::MelodyMissing;
  };
  module.run = [search](Run& run) {
    const auto& parameters = run.Parameters<SearchParameters>();
    const MelodyQuery query = {parameters.melody.elements, parameters.options};
    RunMelodySearch(run, [&](const std::string& path, const HitSink& sink, const CancelCheck& cancelled) {
      return search(path, query, sink, cancelled);
    });
  };
  return module;
}

}  // namespace

void RunMelodySearch(Run& run, const FileSearch& search, unsigned threads) {
  if (threads == 0) threads = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
  SearchRun(run, search, threads).Execute();
}

SearchRecord RecordAtStart(FilterId filter, const SearchParameters& parameters) {
  SearchRecord record;
  record.kind = SearchKindOf(filter);
  record.melodyName = parameters.melody.name;
  record.notes = static_cast<std::size_t>(
      std::ranges::count_if(parameters.melody.elements, [](const auto& e) { return !IsRest(e); }));
  record.start = LocalNow();
  return record;
}

SearchRecord RecordAtEnd(SearchRecord record, const RunResult& result) {
  record.end = LocalNow();
  record.statistics.unsuitable = result.lines[2].count;
  record.statistics.searched = result.lines[0].count - std::min(result.lines[0].count, result.lines[2].count);
  record.statistics.hits = result.lines[1].count;
  const bool noMemory = std::ranges::any_of(
      result.items, [](const RunItem& item) { return item.code == Code(Outcome::OutOfMemory); });
  record.ending = noMemory           ? SearchEnd::Failed
                  : result.cancelled ? SearchEnd::Cancelled
                                     : SearchEnd::Finished;
  return record;
}

FilterModule MidiSearchModule() {
  return SearchModule(FilterId::MidiSearch, SearchMidiFile);
}

FilterModule ScoreSearchModule() {
  return SearchModule(FilterId::ScoreSearch, SearchScoreFile);
}

}  // namespace ts5
