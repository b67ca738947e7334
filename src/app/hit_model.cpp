#include "app/hit_model.h"

#include <array>

#include "frame/ui/qt_text.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

constexpr std::array kMidiColumns{TextId::ColumnFile, TextId::ColumnTrack, TextId::ColumnBar,
                                  TextId::ColumnTime};
constexpr std::array kScoreColumns{TextId::ColumnFile, TextId::ColumnStaffVoice, TextId::ColumnBar,
                                   TextId::ColumnBeat};

std::string CellText(const SearchHit& hit, int column, bool scores, bool wholePath) {
  switch (column) {
    case 0:
      return wholePath ? hit.file : std::string(FileNameOf(hit.file));
    case 1:
      return scores ? Format("%i/%i", hit.track + 1, hit.voice + 1) : std::to_string(hit.track + 1);
    case 2:
      return std::to_string(hit.bar + 1);
    default:
      if (scores) return std::to_string(hit.time + 1);
      return Format("%02i:%02i", hit.time / 60000, hit.time / 1000 % 60);
  }
}

}  // namespace

HitModel::HitModel(QObject* parent) : QAbstractTableModel(parent) {}

void HitModel::SetScores(bool scores) {
  beginResetModel();
  scores_ = scores;
  endResetModel();
}
void HitModel::SetWholePaths(bool wholePaths) {
  beginResetModel();
  wholePaths_ = wholePaths;
  endResetModel();
}

void HitModel::Append(const std::vector<SearchHit>& hits) {
  if (hits.empty()) return;
  const int first = static_cast<int>(hits_.size());
  beginInsertRows({}, first, first + static_cast<int>(hits.size()) - 1);
  hits_.insert(hits_.end(), hits.begin(), hits.end());
  endInsertRows();
}

void HitModel::Clear() {
  beginResetModel();
  hits_.clear();
  endResetModel();
}

int HitModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(hits_.size());
}
int HitModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(kMidiColumns.size());
}

QVariant HitModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const SearchHit& hit = hits_.at(static_cast<std::size_t>(index.row()));
  if (role == Qt::DisplayRole) return ToQt(CellText(hit, index.column(), scores_, wholePaths_));
  if (role == Qt::ToolTipRole && index.column() == 0) return ToQt(hit.file);
  if (role == Qt::DecorationRole && index.column() == 0) return Icon("melodysearchresulticon");
  return {};
}

QVariant HitModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return QtText((scores_ ? kScoreColumns : kMidiColumns).at(static_cast<std::size_t>(section)));
}

}  // namespace ts5
