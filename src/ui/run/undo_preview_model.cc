#include "ui/run/undo_preview_model.h"

#include "engine/run_undo.h"

namespace pairwell {

UndoPreviewModel::UndoPreviewModel(const RunUndo& undo, QObject* parent)
    : QAbstractListModel(parent), undo_(undo) {}

UndoPreviewModel::~UndoPreviewModel() = default;

void UndoPreviewModel::Reload() {
  beginResetModel();
  rows_.clear();
  const std::vector<RunUndo::Item>& items = undo_.Items();
  for (std::size_t i = 0; i < items.size(); ++i) {
    // Steps that never happened, or are undone already, are not news.
    if (items[i].state != RunUndo::Item::State::kNothing) rows_.push_back(i);
  }
  endResetModel();
}

void UndoPreviewModel::Clear() {
  beginResetModel();
  rows_.clear();
  endResetModel();
}

void UndoPreviewModel::SetForce(bool force) {
  if (force == force_) return;
  force_ = force;
  if (rows_.empty()) return;
  emit dataChanged(index(0), index(static_cast<int>(rows_.size()) - 1),
                   {Qt::DisplayRole, Qt::ToolTipRole});
}

int UndoPreviewModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QString UndoPreviewModel::Line(int row) const {
  if (row < 0 || row >= static_cast<int>(rows_.size())) return QString();
  const RunUndo::Item& item =
      undo_.Items().at(rows_[static_cast<std::size_t>(row)]);
  return QString::fromStdString(undo_.Describe(item, force_));
}

QVariant UndoPreviewModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return QVariant();
  // A long path may run past the view's edge: the tip shows it whole.
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return QVariant();
  return Line(index.row());
}

}  // namespace pairwell
