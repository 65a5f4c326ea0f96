#include "ui/run/file_list_filter.h"

#include "engine/sync_file.h"
#include "ui/run/file_list_model.h"

namespace pairwell {

FileListFilter::FileListFilter(FileListModel& files, QObject* parent)
    : QSortFilterProxyModel(parent), files_(files) {
  // Rows are filtered and sorted only when the person asks for it.
  setDynamicSortFilter(false);
  setSourceModel(&files_);
}

FileListFilter::~FileListFilter() = default;

void FileListFilter::SetShowMode(int mode) {
  show_mode_ = mode;
  // The actions may have changed since the last sort.
  if (sortColumn() >= 0) files_.PrepareSortKeys(sortColumn());
  // Rebuilt in one go: letting rows in one by one would send a signal for
  // every gap between the rows already listed.
  invalidate();
}

long FileListFilter::FileIndexOfRow(int row) const {
  return FileListModel::FileIndexOfRow(mapToSource(index(row, 0)).row());
}

void FileListFilter::sort(int column, Qt::SortOrder order) {
  if (column >= 0) files_.PrepareSortKeys(column);
  QSortFilterProxyModel::sort(column, order);
}

bool FileListFilter::filterAcceptsRow(int source_row,
                                      const QModelIndex& source_parent) const {
  if (source_parent.isValid()) return false;
  return MatchesShowMode(files_.FileOfRow(source_row), show_mode_);
}

bool FileListFilter::lessThan(const QModelIndex& left,
                              const QModelIndex& right) const {
  return files_.LessThan(left.row(), right.row(), left.column());
}

}  // namespace pairwell
