#include "ui/window_check.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QMap>
#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTabBar>
#include <QWidget>

namespace pairwell {

namespace {

// The letter after a single '&', lower-cased; a null char when there is
// none ("&&" is a literal ampersand).
QChar AccessKey(const QString& text) {
  for (qsizetype i = 0; i + 1 < text.size(); ++i) {
    if (text.at(i) != QLatin1Char('&')) continue;
    if (text.at(i + 1) == QLatin1Char('&')) {
      ++i;
      continue;
    }
    return text.at(i + 1).toLower();
  }
  return QChar();
}

// Keys to captions, for one scope.
using Scope = QMap<QChar, QStringList>;

void Add(Scope& scope, const QString& caption) {
  const QChar key = AccessKey(caption);
  if (!key.isNull()) scope[key] << caption;
}

void Report(const Scope& scope, QStringList& clashes) {
  for (auto it = scope.begin(); it != scope.end(); ++it) {
    if (it.value().size() > 1) {
      clashes << QString(it.key()) + ": " +
                     it.value().join(QStringLiteral(", "));
    }
  }
}

// The size of a one-line caption as drawn, its access-key '&' left out.
QSize TextSize(const QWidget& control, QString text) {
  text.remove(QRegularExpression(QStringLiteral("&(?!&)")));
  const QFontMetrics metrics = control.fontMetrics();
  return QSize(metrics.horizontalAdvance(text), metrics.height());
}

// The window's own controls: those of a child window are that window's.
bool OwnedBy(const QWidget& control, const QWidget& window) {
  return control.window() == &window;
}

}  // namespace

QStringList AccessKeyClashes(const QWidget& window) {
  Scope controls;
  QStringList clashes;
  for (const QWidget* w : window.findChildren<QWidget*>()) {
    if (!OwnedBy(*w, window)) continue;
    if (auto* button = qobject_cast<const QAbstractButton*>(w)) {
      Add(controls, button->text());
    } else if (auto* label = qobject_cast<const QLabel*>(w)) {
      if (label->textFormat() != Qt::RichText) Add(controls, label->text());
    } else if (auto* group = qobject_cast<const QGroupBox*>(w)) {
      Add(controls, group->title());
    } else if (auto* tabs = qobject_cast<const QTabBar*>(w)) {
      for (int i = 0; i < tabs->count(); ++i) Add(controls, tabs->tabText(i));
    } else if (auto* bar = qobject_cast<const QMenuBar*>(w)) {
      for (const QAction* a : bar->actions()) Add(controls, a->text());
    }
  }
  Report(controls, clashes);
  for (const QMenu* menu : window.findChildren<QMenu*>()) {
    Scope items;
    for (const QAction* a : menu->actions()) {
      if (!a->isSeparator()) Add(items, a->text());
    }
    Report(items, clashes);
  }
  return clashes;
}

QStringList ClippedControls(const QWidget& window) {
  QStringList clipped;
  for (const QWidget* w : window.findChildren<QWidget*>()) {
    if (!OwnedBy(*w, window) || !w->isVisibleTo(&window)) continue;
    QString text;
    QSize needed;
    if (auto* button = qobject_cast<const QAbstractButton*>(w)) {
      text = button->text();
      needed = TextSize(*w, text);
      if (qobject_cast<const QCheckBox*>(w) != nullptr ||
          qobject_cast<const QRadioButton*>(w) != nullptr) {
        needed.rwidth() = w->sizeHint().width();
      } else {
        // Inside the button's frame, however close the style puts it.
        needed.rwidth() += 2;
      }
    } else if (auto* label = qobject_cast<const QLabel*>(w)) {
      // A label that cuts its text on purpose says so with a tool tip.
      if (!label->toolTip().isEmpty()) continue;
      text = label->text();
      needed = label->sizeHint();
      if (label->wordWrap()) {
        needed = QSize(0, label->heightForWidth(label->width()));
      }
    } else if (auto* group = qobject_cast<const QGroupBox*>(w)) {
      text = group->title();
      needed = TextSize(*w, text);
      needed.rwidth() += 2 * w->fontMetrics().averageCharWidth();
    } else {
      continue;
    }
    if (text.isEmpty()) continue;
    const QString what = w->objectName() + " (" + text + ")";
    const QWidget* parent = w->parentWidget();
    if (parent != nullptr && !parent->rect().contains(w->geometry())) {
      clipped << what + " reaches out of " + parent->objectName();
    } else if (w->width() < needed.width() || w->height() < needed.height()) {
      clipped << what + QString(" is %1x%2 for %3x%4")
                            .arg(w->width())
                            .arg(w->height())
                            .arg(needed.width())
                            .arg(needed.height());
    }
  }
  return clipped;
}

}  // namespace pairwell
