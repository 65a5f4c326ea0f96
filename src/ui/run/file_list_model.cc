#include "ui/run/file_list_model.h"

#include <QFontDatabase>
#include <algorithm>

#include "engine/action_texts.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"

namespace pairwell {

FileListModel::FileListModel(Synchronizer& set, QObject* parent)
    : QAbstractTableModel(parent),
      set_(set),
      // The status letters line up folder by folder in a fixed font.
      status_font_(QFontDatabase::systemFont(QFontDatabase::FixedFont)) {}

FileListModel::~FileListModel() = default;

SyncFile& FileListModel::FileOfRow(int row) const {
  return set_.WFile(FileIndexOfRow(row));
}

int FileListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(set_.WFileCount());
}

int FileListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QString FileListModel::Text(int row, int column) const {
  const SyncFile& file = FileOfRow(row);
  switch (column) {
    case kFile:
      return QString::fromStdString(file.RelativeName());
    case kStatus:
      return QString::fromStdString(StatusText(file));
    case kAction:
      return QString::fromStdString(ActionText(file));
    default:
      return QString();
  }
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return QVariant();
  switch (role) {
    case Qt::DisplayRole:
      return Text(index.row(), index.column());
    case Qt::FontRole:
      if (index.column() == kStatus) return status_font_;
      return QVariant();
    default:
      return QVariant();
  }
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation,
                                   int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
    return QAbstractTableModel::headerData(section, orientation, role);
  }
  switch (section) {
    case kFile:
      return QStringLiteral("File");
    case kStatus:
      return QStringLiteral("Status");
    case kAction:
      return QStringLiteral("Action");
    default:
      return QVariant();
  }
}

void FileListModel::FilesChanged(const std::vector<long>& file_indexes) {
  if (file_indexes.empty()) return;
  // One signal for the whole span: a selection of every file must not send
  // a signal per row.
  const auto [low, high] =
      std::minmax_element(file_indexes.begin(), file_indexes.end());
  emit dataChanged(index(RowOfFile(*low), 0),
                   index(RowOfFile(*high), kColumnCount - 1));
}

void FileListModel::Reload() {
  beginResetModel();
  keys_column_ = -1;
  keys_.clear();
  endResetModel();
}

QString FileListModel::SortKey(int row, int column) const {
  return Text(row, column).toCaseFolded();
}

void FileListModel::PrepareSortKeys(int column) {
  const int rows = rowCount();
  keys_.resize(static_cast<std::size_t>(rows));
  for (int row = 0; row < rows; ++row) {
    keys_[static_cast<std::size_t>(row)] = SortKey(row, column);
  }
  keys_column_ = column;
}

bool FileListModel::LessThan(int left_row, int right_row, int column) const {
  if (column == keys_column_ &&
      keys_.size() == static_cast<std::size_t>(rowCount())) {
    return keys_[static_cast<std::size_t>(left_row)] <
           keys_[static_cast<std::size_t>(right_row)];
  }
  return SortKey(left_row, column) < SortKey(right_row, column);
}

}  // namespace pairwell
