// What a screen reader learns of a combo box.
#pragma once

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QComboBox>

// By itself a combo box has no name but its text.
class ComboBoxAccess : public QAccessibleWidget {
public:
  explicit ComboBoxAccess(QComboBox* new_box)
      : QAccessibleWidget(new_box, QAccessible::ComboBox), box(*new_box) {}

  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Value ? box.currentText() : QAccessibleWidget::text(kind);
  }

  // Its only child is the list that it drops down.
  int childCount() const override { return 1; }
  QAccessibleInterface* child(int) const override {
    return QAccessible::queryAccessibleInterface(box.view());
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    return child->object() == box.view() ? 0 : -1;
  }

  QAccessible::State state() const override {
    QAccessible::State result = QAccessibleWidget::state();
    result.expandable = true;
    result.expanded = box.view()->isVisible();
    return result;
  }
  QStringList actionNames() const override { return {showMenuAction()}; }
  void doAction(const QString&) override { box.showPopup(); }

  // Makes Qt use this class for all combo boxes that are made later.
  static void install() {
    QAccessible::installFactory([](const QString&, QObject* object) -> QAccessibleInterface* {
      auto* const found = qobject_cast<QComboBox*>(object);
      return found ? new ComboBoxAccess(found) : nullptr;
    });
  }

private:
  QComboBox& box;
};
