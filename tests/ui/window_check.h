// Checks of a window as a person sees it: access keys that two controls
// share, and captions that do not fit their controls.
#ifndef PAIRWELL_TESTS_UI_WINDOW_CHECK_H_
#define PAIRWELL_TESTS_UI_WINDOW_CHECK_H_

#include <QStringList>

class QWidget;

namespace pairwell {

// The access keys used more than once in one scope, each as
// "<key>: <caption>, <caption>". The scopes are the window itself (its
// buttons, check boxes, labels, group boxes, tabs and menu titles) and each
// of its menus. Hidden controls count: they show in another state.
QStringList AccessKeyClashes(const QWidget& window);

// The shown buttons, check boxes, labels and group boxes whose caption is
// wider or taller than the control, or that reach out of their parent:
// "<objectName> (<caption>) ...".
QStringList ClippedControls(const QWidget& window);

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_UI_WINDOW_CHECK_H_
