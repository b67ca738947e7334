// The files of the source area as a model: the files of a directory, or the entries of a free file list,
// shown without being copied. A list of 100,000 entries costs nothing but the rows that are looked at.
#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "frame/file_list.h"
#include "frame/file_view.h"

namespace ts5 {

class FileViewModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  explicit FileViewModel(QObject* parent = nullptr);

  // The list must outlive the model, or be replaced by another Show before it goes.
  void ShowList(const FreeFileList& list, FilterId filter);
  // Tracks of an audio CD have columns of their own.
  void ShowDirectory(std::vector<FileListEntry> files);
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
  [[nodiscard]] std::size_t Size() const { return Entries().size(); }
  [[nodiscard]] const FileListEntry& At(std::size_t row) const { return Entries()[row]; }

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
  [[nodiscard]] const std::vector<FileListEntry>& Entries() const {
    return list_ != nullptr ? list_->Entries() : files_;
  }
  [[nodiscard]] const QIcon& IconOf(FileTypeId type) const;

  const FreeFileList* list_ = nullptr;
  std::vector<FileListEntry> files_;
  std::span<const ColumnTitle> columns_;
  TextOfEntry textOf_;
  mutable std::map<FileTypeId, QIcon> icons_;
};

}  // namespace ts5
