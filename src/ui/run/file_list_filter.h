// The rows of the confirm window's file list that its show mode lets
// through, in the order of the chosen sort column (the set's file order
// until one is chosen).
//
// The list is not kept up to date as actions change: a file that no longer
// matches the show mode stays until the mode is chosen again, and an edited
// row keeps its place until the next sort. That is how the person can see
// what they just changed.
#ifndef PAIRWELL_UI_RUN_FILE_LIST_FILTER_H_
#define PAIRWELL_UI_RUN_FILE_LIST_FILTER_H_

#include <QSortFilterProxyModel>

#include "engine/action_texts.h"

namespace pairwell {

class FileListModel;

class FileListFilter final : public QSortFilterProxyModel {
  Q_OBJECT

 public:
  // Shows the files of the model (not owned; it must outlive the filter).
  explicit FileListFilter(FileListModel& files, QObject* parent = nullptr);
  ~FileListFilter() override;
  Q_DISABLE_COPY_MOVE(FileListFilter)

  int ShowMode() const { return show_mode_; }
  // Lists again the files that match the mode (kShowNeedConfirmation ...
  // kShowAllFiles), sorted as before.
  void SetShowMode(int mode);

  // The 1-based file index that a row of this list shows.
  long FileIndexOfRow(int row) const;

  void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

 protected:
  bool filterAcceptsRow(int source_row,
                        const QModelIndex& source_parent) const override;
  bool lessThan(const QModelIndex& left,
                const QModelIndex& right) const override;

 private:
  FileListModel& files_;
  int show_mode_ = kShowAllFiles;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_RUN_FILE_LIST_FILTER_H_
