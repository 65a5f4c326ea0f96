// The undo dialog's list of steps: one line for each step of the loaded run
// that still has something to do, in the order the undo takes them. The
// lines are worded by the undo itself when they are drawn, so that a run of
// 50,000 steps costs one index per row and no text until it is seen.
#ifndef PAIRWELL_UI_RUN_UNDO_PREVIEW_MODEL_H_
#define PAIRWELL_UI_RUN_UNDO_PREVIEW_MODEL_H_

#include <QAbstractListModel>
#include <QString>
#include <cstddef>
#include <vector>

namespace pairwell {

class RunUndo;

class UndoPreviewModel final : public QAbstractListModel {
  Q_OBJECT

 public:
  // The undo must outlive the model, and its items must stay as they are
  // between Reload calls.
  explicit UndoPreviewModel(const RunUndo& undo, QObject* parent = nullptr);
  ~UndoPreviewModel() override;
  Q_DISABLE_COPY_MOVE(UndoPreviewModel)

  // Starts again from the undo's items as they are now: call after each
  // successful RunUndo::Load.
  void Reload();
  // Shows no steps: call when a Load failed.
  void Clear();
  // Whether files changed since the run are put back too; their lines
  // change.
  void SetForce(bool force);
  bool Force() const { return force_; }

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index,
                int role = Qt::DisplayRole) const override;

  // The line of row `row` (0-based), as drawn.
  QString Line(int row) const;

 private:
  const RunUndo& undo_;
  bool force_ = false;
  // The index in RunUndo::Items() of each row's item.
  std::vector<std::size_t> rows_;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_RUN_UNDO_PREVIEW_MODEL_H_
