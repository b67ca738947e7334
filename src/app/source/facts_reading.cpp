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
constexpr std::chrono::milliseconds kPieceTime{40};
// A file that takes longer lies on a medium that does not answer: it is left to itself.
constexpr std::chrono::seconds kPatience{5};

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
  working_ = true;
  begun_ = Clock::now();
  worker_->Start([this, file = memoryFile_]() -> BackgroundWorker::Done {
    const auto kept = std::make_shared<FactsMemory>();
    if (const auto bytes = ReadFile(file, FactsMemory::kMaxFile)) kept->Unpack(*bytes);
    return [this, kept] {
      model_.Memory().TakeIn(std::move(*kept));
      working_ = false;
      Wake();
    };
  });
}

void FactsReading::Next() {
  if (working_) return LeaveHanging();
  if (!view_.isVisible() || !model_.MayArrange()) return;
  auto piece = std::make_shared<Piece>();
  piece->wanted = MostWanted();
  if (piece->wanted.empty()) return;
  working_ = true;
  begun_ = Clock::now();
  worker_->Start([this, piece, reader = reader_]() -> BackgroundWorker::Done {
    const auto end = Clock::now() + kPieceTime;
    for (const Wanted& one : piece->wanted) {
      piece->facts.push_back(FactsOf(one.path, one.known, reader));
      if (Clock::now() >= end) break;
    }
    return [this, piece] { Take(*piece); };
  });
}

// Unread rows in the order in which they are wanted.
std::vector<FactsReading::Wanted> FactsReading::MostWanted() const {
  std::vector<Wanted> wanted;
  std::set<std::size_t> rows;
  const auto add = [&](std::size_t row) {
    if (model_.IsUnread(row) && rows.insert(row).second)
      wanted.push_back({model_.EntryOf(row), model_.At(row).path, model_.FactsAt(row)});
    return wanted.size() < kMostInPiece;
  };
  const auto [first, last] = view_.RowsInSight();
  if (model_.ShowsFacts()) {
    for (std::size_t row = first; row < last && add(row); ++row) {
    }
  }
  for (const QItemSelectionRange& range : view_.selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom() && wanted.size() < kMostInPiece; ++row)
      (void)add(static_cast<std::size_t>(row));
  }
  if (model_.Order().NeedsFacts()) {
    for (std::size_t row = 0; row < model_.Size() && wanted.size() < kMostInPiece; ++row) (void)add(row);
  }
  return wanted;
}

void FactsReading::Take(const Piece& piece) {
  working_ = false;
  for (std::size_t i = 0; i < piece.facts.size(); ++i)
    model_.TakeFacts(piece.wanted[i].entry, piece.wanted[i].path, piece.facts[i]);
  view_.viewport()->update();
  emit Read();
  Wake();
}

void FactsReading::LeaveHanging() {
  if (Clock::now() - begun_ < kPatience) return;
  worker_ = std::make_unique<BackgroundWorker>();
  working_ = false;
  Wake();
}

}  // namespace ts5
