// The confirm window's file list: one row per working file of the run, in
// the set's file order, with the file's name, status and action. The texts
// are computed from the file whenever a row is drawn, so the list never
// holds a stale copy of an action.
#ifndef PAIRWELL_UI_RUN_FILE_LIST_MODEL_H_
#define PAIRWELL_UI_RUN_FILE_LIST_MODEL_H_

#include <QAbstractTableModel>
#include <QFont>
#include <QString>
#include <vector>

namespace pairwell {

class Synchronizer;
class SyncFile;

class FileListModel final : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { kFile = 0, kStatus = 1, kAction = 2, kColumnCount = 3 };

  // The set's working files must stay as they are while the model lives;
  // call Reload after they were rebuilt.
  explicit FileListModel(Synchronizer& set, QObject* parent = nullptr);
  ~FileListModel() override;
  Q_DISABLE_COPY_MOVE(FileListModel)

  // The one place where rows and files meet: row r shows WFile(r + 1).
  static long FileIndexOfRow(int row) { return static_cast<long>(row) + 1; }
  static int RowOfFile(long file_index) {
    return static_cast<int>(file_index - 1);
  }
  SyncFile& FileOfRow(int row) const;

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  int columnCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index,
                int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;

  // The text of one cell as the file stands now.
  QString Text(int row, int column) const;

  // Redraws the rows of these files (1-based indexes) after they changed.
  void FilesChanged(const std::vector<long>& file_indexes);

  // Starts again from the set's file list as it is now.
  void Reload();

  // Sorting compares texts computed once per sort rather than once per
  // comparison: a sort of 100,000 rows makes millions of comparisons.
  // PrepareSortKeys computes the keys of a column; LessThan compares two
  // rows by them, ignoring case.
  void PrepareSortKeys(int column);
  bool LessThan(int left_row, int right_row, int column) const;

 private:
  QString SortKey(int row, int column) const;

  Synchronizer& set_;
  QFont status_font_;
  int keys_column_ = -1;
  std::vector<QString> keys_;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_RUN_FILE_LIST_MODEL_H_
