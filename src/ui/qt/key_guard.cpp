// Keeps Enter and Space from pressing what the user has not seen yet.
#include "ui/qt/key_guard.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QKeyEvent>
#include <QPlainTextEdit>

namespace {

QDeadlineTimer rest;

bool is_pressing_key(int key) {
  return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
}

class KeyGuard : public QObject {
public:
  using QObject::QObject;

  bool eventFilter(QObject* target, QEvent* event) override {
    if (event->type() == QEvent::KeyRelease)
      released = static_cast<QKeyEvent*>(event)->timestamp();
    if (event->type() != QEvent::KeyPress || !target->isWidgetType() ||
        qobject_cast<QPlainTextEdit*>(target))
      return false;
    const auto& key = *static_cast<QKeyEvent*>(event);
    return is_pressing_key(key.key()) && (repeats(key) || !rest.hasExpired());
  }

private:
  // X11 sends a release before each repetition, which Qt does not always see through.
  bool repeats(const QKeyEvent& key) const {
    constexpr quint64 no_finger_ms = 5;
    return key.isAutoRepeat() || (released != 0 && key.timestamp() - released < no_finger_ms);
  }

  quint64 released = 0;  // when a key was, in milliseconds; 0 if that is not known
};

}  // namespace

void guard_keys(QWidget* window) { qApp->installEventFilter(new KeyGuard(window)); }

void pause_keys() { rest.setRemainingTime(QApplication::doubleClickInterval()); }
