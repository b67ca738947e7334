// The files of the source area as a model: the files of a directory, or the entries of a free file list,
// shown without being copied. A list of 100,000 entries costs nothing but the rows that are looked at.
//
// A row is what is seen; an entry is its place in the list or directory. A view on the list (ListOrder) may
// leave entries out and show them in another order.
#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "frame/facts_memory.h"
#include "frame/file_columns.h"
#include "frame/file_list.h"
#include "frame/file_view.h"
#include "frame/list_order.h"

namespace ts5 {

class FileViewModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  explicit FileViewModel(QObject* parent = nullptr);

  // The list must outlive the model, or be replaced by another Show before it goes.
  void ShowList(const FreeFileList& list, FilterId filter);
  // Tracks of an audio CD have columns of their own. With its subdirectories a directory also shows where
  // each file lies; root: that directory.
  void ShowDirectory(std::vector<FileListEntry> files, const std::string& root = {},
                     bool subdirectories = false);
  // More files of the directory that is shown.
  void Append(const std::vector<FileListEntry>& files);
  // The list that is shown has changed.
  void Changed();
  // Two columns more: the texts that the tracks of a disc get, which the user may change. An empty function
  // takes them away.
  enum class TrackText { Title, Performer };
  using TextOfEntry = std::function<QString(const FileListEntry&, TrackText)>;
  void ShowTexts(TextOfEntry textOf);

  [[nodiscard]] std::optional<TrackText> TextColumn(int column) const;
  [[nodiscard]] bool ShowsList() const { return list_ != nullptr; }
  // The directory is an audio CD, and what is shown are its tracks.
  [[nodiscard]] bool ShowsAudioCd() const {
    return !ShowsList() && !files_.empty() && files_.front().cdTrack;
  }
  [[nodiscard]] std::size_t Size() const { return rows_.size(); }  // rows
  [[nodiscard]] std::size_t Total() const { return Entries().size(); }
  [[nodiscard]] const FileListEntry& At(std::size_t row) const;

  // --- the view on the list

  // The order of a disc, and of what becomes one, is its own, and so are its columns.
  [[nodiscard]] bool MayArrange() const { return !ShowsAudioCd() && !timed_; }
  void Arrange(const ListOrder& order);
  // Directories and the free file list have each one of their own.
  [[nodiscard]] const ListOrder& Order() const { return ShowsList() ? listOrder_ : directoryOrder_; }
  [[nodiscard]] bool ShowsOwnOrder() const { return !MayArrange() || Order().IsOwn(); }
  // Total() for a row that is none.
  [[nodiscard]] std::size_t EntryOf(std::size_t row) const;
  [[nodiscard]] std::vector<std::size_t> EntriesOf(const std::vector<std::size_t>& rows) const;
  // Those that are shown of these, ascending; entries in any order.
  [[nodiscard]] std::vector<std::size_t> RowsOf(const std::vector<std::size_t>& entries) const;

  // --- facts

  void SetColumns(const ShownColumns& columns);
  [[nodiscard]] const ShownColumns& Columns() const { return shown_; }
  // What a column of the model shows; nothing for a text of a track.
  [[nodiscard]] std::optional<FileColumn> ColumnAt(int column) const;
  [[nodiscard]] bool ShowsFacts() const { return MayArrange() && !shown_.empty(); }
  // Whether the facts of a row are still to be read; music: all of them, not only size and date.
  [[nodiscard]] bool IsUnread(std::size_t row, bool music = true) const;
  [[nodiscard]] SharedFacts FactsAt(std::size_t row) const;
  // path: that of the entry when its reading began, by then it may be another one.
  void TakeFacts(std::size_t entry, const std::string& path, SharedFacts facts);
  // Facts that were read in the session or before are there at once.
  [[nodiscard]] FactsMemory& Memory() { return memory_; }

  struct Sum {
    std::chrono::milliseconds length{};
    bool whole = true;  // all facts were known
  };
  [[nodiscard]] Sum LengthOf(const std::vector<std::size_t>& rows) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  // A new label: reported, not taken; the owner renames the file.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 signals:
  void LabelEdited(std::size_t row, const QString& label);
  void TextEdited(std::size_t row, TrackText which, const QString& text);

 private:
  // What is known of an entry, and whether its date, or all of it, is so now.
  struct Known {
    SharedFacts facts;
    bool dated = false;
    bool read = false;
  };

  [[nodiscard]] const std::vector<FileListEntry>& Entries() const {
    return list_ != nullptr ? list_->Entries() : files_;
  }
  void LayRows();
  void OrderRows();
  void LayColumns();
  void Recall(std::size_t from);
  [[nodiscard]] QString TextAt(const FileListEntry& entry, std::size_t row, FileColumn column) const;
  [[nodiscard]] const QIcon& IconOf(FileTypeId type) const;

  const FreeFileList* list_ = nullptr;
  std::vector<FileListEntry> files_;
  std::string root_;
  bool subdirectories_ = false;
  bool timed_ = false;  // the list of a disc
  ListOrder directoryOrder_;
  ListOrder listOrder_;
  std::vector<std::uint32_t> rows_;  // entries
  std::vector<Known> known_;         // of the entries
  FactsMemory memory_;
  ShownColumns shown_;
  std::vector<ColumnTitle> columns_;
  TextOfEntry textOf_;
  mutable std::map<FileTypeId, QIcon> icons_;
};

}  // namespace ts5
