#include "app/source/facts_reading.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

using Clock = std::chrono::steady_clock;

// A piece of reading ends after so many files or so long, then it is looked what is wanted most by now.
constexpr std::size_t kMostInPiece = 64;
constexpr std::size_t kMostDatesInPiece = 1000;
constexpr std::chrono::milliseconds kPieceTime{40};
// A file that takes longer lies on a medium that does not answer: it is left to itself. After so many of them
// nothing more is read.
constexpr std::chrono::seconds kPatience{5};
constexpr int kMostHangs = 3;

}  // namespace

// What was read of the wanted files; without facts: there is no such file any more.
struct FactsReading::Piece {
  std::vector<Wanted> wanted;
  std::vector<SharedFacts> facts;  // of the first of them
};

FactsReading::FactsReading(FileView& view, FactsReader reader, std::string memoryFile)
    : view_(view),
      model_(*view.FileModel()),
      reader_(std::move(reader)),
      memoryFile_(std::move(memoryFile)),
      worker_(std::make_unique<BackgroundWorker>()) {
  timer_.setSingleShot(true);
  timer_.setInterval(0);
  connect(&timer_, &QTimer::timeout, this, &FactsReading::Next);
  connect(&view_, &FileView::SightChanged, this, &FactsReading::Wake);
  connect(view_.selectionModel(), &QItemSelectionModel::selectionChanged, this, &FactsReading::Wake);
  ReadMemory();
}

FactsReading::~FactsReading() {
  if (memoryFile_.empty() || !model_.Memory().Changed()) return;
  // What is lost here is read again.
  if (Succeeded(MakeDirectories(std::string(DirectoryOf(memoryFile_)))))
    (void)WriteFile(memoryFile_, model_.Memory().Pack());
}

void FactsReading::ReadMemory() {
  if (memoryFile_.empty()) return;
  remembering_ = true;
  begun_ = Clock::now();
  worker_->Start([this, file = memoryFile_]() -> BackgroundWorker::Done {
    const auto kept = std::make_shared<FactsMemory>();
    if (const auto bytes = ReadFile(file, FactsMemory::kMaxFile)) kept->Unpack(*bytes);
    return [this, kept] {
      model_.Memory().TakeIn(std::move(*kept));
      remembering_ = false;
      Wake();
    };
  });
}

void FactsReading::Next() {
  if (Busy()) return LeaveHanging();
  if (hangs_ >= kMostHangs || !view_.isVisible() || !model_.MayArrange()) return;
  auto piece = std::make_shared<Piece>();
  piece->wanted = MostWanted();
  if (piece->wanted.empty()) return;
  working_ = piece;
  begun_ = Clock::now();
  worker_->Start([this, piece, reader = reader_]() -> BackgroundWorker::Done {
    const auto end = Clock::now() + kPieceTime;
    for (const Wanted& one : piece->wanted) {
      piece->facts.push_back(FactsOf(one.path, one.known, one.music ? reader : FactsReader()));
      if (Clock::now() >= end) break;
    }
    return [this, piece] { Take(*piece); };
  });
}

// Unread rows in the order in which they are wanted.
std::vector<FactsReading::Wanted> FactsReading::MostWanted() const {
  std::vector<Wanted> wanted;
  std::set<std::size_t> rows;
  const auto add = [&](std::size_t row, bool music = true) {
    if (model_.IsUnread(row, music) && rows.insert(row).second)
      wanted.push_back({model_.EntryOf(row), model_.At(row).path, model_.FactsAt(row), music});
    return wanted.size() < kMostInPiece;
  };
  const auto [first, last] = view_.RowsInSight();
  if (model_.ShowsFacts()) {
    for (std::size_t row = first; row < last; ++row) {
      if (!add(row)) break;
    }
  }
  for (const QItemSelectionRange& range : view_.selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom() && wanted.size() < kMostInPiece; ++row)
      (void)add(static_cast<std::size_t>(row));
  }
  if (model_.Order().NeedsFacts()) {
    const bool music = model_.Order().NeedsMusic();
    const std::size_t most = music ? kMostInPiece : kMostDatesInPiece;
    for (std::size_t row = 0; row < model_.Size() && wanted.size() < most; ++row) (void)add(row, music);
  }
  return wanted;
}

void FactsReading::Take(const Piece& piece) {
  working_.reset();
  hangs_ = 0;
  for (std::size_t i = 0; i < piece.facts.size(); ++i)
    model_.TakeFacts(piece.wanted[i].entry, piece.wanted[i].path, piece.facts[i]);
  view_.viewport()->update();
  emit Read();
  Wake();
}

void FactsReading::LeaveHanging() {
  if (Clock::now() - begun_ < kPatience) return;
  worker_ = std::make_unique<BackgroundWorker>();
  ++hangs_;
  remembering_ = false;
  if (const auto piece = std::exchange(working_, nullptr)) {
    for (const Wanted& one : piece->wanted) model_.TakeFacts(one.entry, one.path, nullptr);
  }
  Wake();
}

}  // namespace ts5
