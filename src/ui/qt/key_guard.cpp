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
    if (event->type() != QEvent::KeyPress || !target->isWidgetType() ||
        qobject_cast<QPlainTextEdit*>(target))
      return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    return is_pressing_key(key->key()) && (key->isAutoRepeat() || !rest.hasExpired());
  }
};

}  // namespace

void guard_keys(QWidget* window) { qApp->installEventFilter(new KeyGuard(window)); }

void pause_keys() { rest.setRemainingTime(QApplication::doubleClickInterval()); }
