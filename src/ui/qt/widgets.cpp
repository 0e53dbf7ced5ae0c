// The widgets that mirror the form's controls, one for each row of the layout.
#include "ui/qt/widgets.h"

#include "ui/handlers.h"
#include "ui/qt/fonts.h"
#include "ui/qt/key_guard.h"
#include "ui/qt/text_box.h"
#include "ui/qt/texts.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QStyle>
#include <QTreeView>

namespace {

constexpr int path_role = Qt::UserRole;
constexpr int indentation = 12;  // of a subfolder, in pixels

template <class Widget>
void show_caption(const ControlLayout& row, const Form1& form, Widget* widget) {
  const QString caption = to_qt(control_of(row, form).text());
  const Room room = caption_room(row, form, widget->window()->width(), widget->logicalDpiX());
  widget->setFont(fitted(font_of(row.font), caption, room));
  widget->setText(caption);
}

std::function<void()> make_button(const ControlLayout& row, Form1& form, QPushButton* button) {
  Control& control = control_of(row, form);
  button->setAutoDefault(true);  // Enter presses it as well
  QObject::connect(button, &QPushButton::clicked, [&form, &control, button] {
    press(form, control);
    if (control.enabled())
      return;
    const QString next = QString::fromStdString(focus_after(form).name());
    if (auto* widget = button->window()->findChild<QWidget*>(next))
      widget->setFocus();
    pause_keys();
  });
  return [&row, &form, button] { show_caption(row, form, button); };
}

Qt::Alignment alignment(Align align) {
  if (align == Align::left)
    return Qt::AlignLeft | Qt::AlignTop;
  return (align == Align::right ? Qt::AlignRight : Qt::AlignHCenter) | Qt::AlignTop;
}

std::function<void()> make_label(const ControlLayout& row, Form1& form, QLabel* label) {
  label->setTextFormat(Qt::PlainText);
  label->setAlignment(alignment(row.align));
  label->setWordWrap(!row.sized_to_text);
  return [&row, &form, label] {
    show_caption(row, form, label);
    if (row.sized_to_text)
      label->adjustSize();
  };
}

// Nothing to show: what the form appends comes by `add`.
std::function<void()> make_text_box(const ControlLayout& row, Form1& form, TextBox* box) {
  box->report_typing_to(control_of(row, form));
  return [] {};
}

std::function<void()> make_drive_list(const ControlLayout&, Form1& form, QComboBox* list) {
  const auto show = [&form, list] {
    list->clear();
    for (const std::string& drive : form.Drive1.drives)
      list->addItem(to_qt(drive));
    list->setCurrentIndex(list->findText(to_qt(form.Drive1.text())));
  };
  QObject::connect(list, &QComboBox::activated, [&form, list, show] {
    select_drive(form, list->currentText().toStdString());
    show();  // the drive may not have been ready, or a search is running
  });
  return show;
}

// A model of names in which each is its own tool tip.
class NameModel : public QStringListModel {
public:
  using QStringListModel::QStringListModel;

  QVariant data(const QModelIndex& index, int role) const override {
    const QVariant own =
        QStringListModel::data(index, role == Qt::ToolTipRole ? Qt::DisplayRole : role);
    return role == Qt::ToolTipRole ? plain_tip(own.toString().toStdString()) : own;
  }
};

std::function<void()> make_file_list(const ControlLayout&, Form1& form, QListView* list) {
  auto* names = new NameModel(list);
  list->setModel(names);
  list->setUniformItemSizes(true);
  list->setEditTriggers(QAbstractItemView::NoEditTriggers);
  return [&form, names] {
    QStringList texts;
    for (const std::string& name : form.File1.names())
      texts.append(to_qt(name));
    names->setStringList(texts);
  };
}

// A folder of the directory list; its tool tip is its path.
class FolderItem : public QStandardItem {
public:
  FolderItem(const FolderRow& row, const QIcon& icon)
      : QStandardItem(icon, to_qt(row.name)), path(row.path) {}

  QVariant data(int role) const override {
    if (role == path_role)
      return QByteArray::fromStdString(path);  // names need not be valid UTF-8
    return role == Qt::ToolTipRole ? plain_tip(path) : QStandardItem::data(role);
  }

private:
  const std::string path;
};

// Adds the folders as items, each below its parent. Returns the item of the folder that the list
// shows; null when it shows none.
QStandardItem* fill_folders(const DirectoryList& folders, QStandardItemModel& model,
                            const QStyle& style) {
  const QIcon open = style.standardIcon(QStyle::SP_DirOpenIcon);
  const QIcon closed = style.standardIcon(QStyle::SP_DirIcon);
  const std::vector<FolderRow> rows = folders.rows();
  if (rows.empty())
    return nullptr;
  const std::size_t own_row = folders.own_row();
  QStandardItem* own = model.invisibleRootItem();
  for (std::size_t i = 0; i <= own_row; ++i) {
    auto* item = new FolderItem(rows[i], open);
    own->appendRow(item);
    own = item;
  }
  QList<QStandardItem*> below;
  for (std::size_t i = own_row + 1; i < rows.size(); ++i)
    below.append(new FolderItem(rows[i], closed));
  own->appendRows(below);
  return own;
}

// A tree that draws no lines between its items.
class FolderTree : public QTreeView {
public:
  using QTreeView::QTreeView;

protected:
  void drawBranches(QPainter*, const QRect&, const QModelIndex&) const override {}
};

void set_up_tree(QTreeView* tree) {
  tree->setHeaderHidden(true);
  tree->setRootIsDecorated(false);
  tree->setItemsExpandable(false);
  tree->setExpandsOnDoubleClick(false);
  tree->setUniformRowHeights(true);
  tree->setIndentation(indentation);
  tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
  tree->header()->setStretchLastSection(false);
  tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

std::function<void()> make_directory_list(const ControlLayout&, Form1& form, FolderTree* tree) {
  auto* model = new QStandardItemModel(tree);
  tree->setModel(model);
  set_up_tree(tree);
  const auto open = [&form, tree] {
    const std::string path = tree->currentIndex().data(path_role).toByteArray().toStdString();
    if (!path.empty())
      open_folder(form, path);
  };
  QObject::connect(tree, &QTreeView::doubleClicked, open);
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
    auto* shortcut = new QShortcut(key, tree, nullptr, nullptr, Qt::WidgetShortcut);
    shortcut->setAutoRepeat(false);
    QObject::connect(shortcut, &QShortcut::activated, open);
  }
  return [&form, tree, model] {
    model->clear();
    const QStandardItem* own = fill_folders(form.Dir1, *model, *tree->style());
    tree->expandAll();
    if (!own)
      return;
    tree->setCurrentIndex(own->index());
    tree->scrollTo(own->index(), QAbstractItemView::PositionAtCenter);
    // Scrolled to the left, unless the folder is too deep to be seen then.
    QScrollBar* const across = tree->horizontalScrollBar();
    across->setValue(0);
    across->setValue(tree->visualRect(own->index()).left() - tree->viewport()->width() / 2);
  };
}

template <class Widget>
Mirror mirror(const ControlLayout& row, Form1& form, QWidget* window,
              std::function<void()> (*make)(const ControlLayout&, Form1&, Widget*)) {
  auto* widget = new Widget(window);
  widget->setObjectName(row.name);
  widget->setFont(font_of(row.font));
  return {&row, widget, make(row, form, widget)};
}

}  // namespace

Mirror make_mirror(const ControlLayout& row, Form1& form, QWidget* window) {
  switch (row.kind) {
  case Kind::drive_list:
    return mirror(row, form, window, make_drive_list);
  case Kind::file_list:
    return mirror(row, form, window, make_file_list);
  case Kind::directory_list:
    return mirror(row, form, window, make_directory_list);
  case Kind::button:
    return mirror(row, form, window, make_button);
  case Kind::text_box:
    return mirror(row, form, window, make_text_box);
  case Kind::label:
    break;
  }
  return mirror(row, form, window, make_label);
}
