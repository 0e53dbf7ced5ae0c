// The window itself: its layout, its states, and what a user does with mouse and keyboard.
#include "platform/prefix/prefix_files.h"
#include "platform/prefix/prefix_system.h"
#include "tests/support/prefix/machine_of.h"
#include "ui/handlers.h"
#include "ui/qt/fonts.h"
#include "ui/qt/main_window.h"
#include "ui/qt/texts.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QListView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeView>

namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

// A machine with four old maps, one of them the game's own.
struct GameMachine : TestMachine {
  GameMachine() {
    install_with_maps();
    write_file(drive_c / "Games/vora/galaxies/own.galaxy", old_map);
  }
};

// The program in its window, after start-up.
class TheWindow : public testing::Test {
protected:
  TheWindow() {
    load_form(form);
    window.activateWindow();
  }

  template <class Widget = QWidget> Widget& widget(const char* name) const {
    return *window.findChild<Widget*>(name);
  }

  void click(const char* button) const { widget<QPushButton>(button).click(); }

  std::string text(const char* box) const {
    QApplication::processEvents();
    return form_text(widget<QPlainTextEdit>(box).toPlainText());
  }

  // Whether Command1 to Command7 are enabled, a digit each, then the stage counter.
  std::string state() const {
    std::string digits;
    for (int i = 1; i <= 7; ++i)
      digits += widget(("Command" + std::to_string(i)).c_str()).isEnabled() ? "1" : "0";
    return digits + " " + widget<QLabel>("Label8").text().toStdString();
  }

  // The item of a folder in the directory list.
  QModelIndex item(const char* name) const {
    const QAbstractItemModel& model = *folders.model();
    return model
        .match(model.index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly | Qt::MatchRecursive)
        .value(0);
  }

  void double_click(const char* name) const {
    folders.scrollTo(item(name));
    const QPoint at = folders.visualRect(item(name)).center();
    QTest::mouseClick(folders.viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(folders.viewport(), Qt::LeftButton, {}, at);
  }

  GameMachine machine;
  PrefixFiles files{machine_of(machine)};
  PrefixSystem system{machine_of(machine), ""};
  MainWindow window;
  Form1 form{files, system, window};
  QTreeView& folders = (window.open(form), widget<QTreeView>("Dir1"));
};

std::string focused() {
  const QWidget* widget = QApplication::focusWidget();
  return widget ? widget->objectName().toStdString() : "";
}

void press_key(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }

// The key has been down for a while: it repeats.
void hold_key(Qt::Key key, QWidget* focus = QApplication::focusWidget()) {
  const QString text = key == Qt::Key_Space ? " " : "\r";
  QKeyEvent repeated(QEvent::KeyPress, key, {}, text, true);
  QApplication::sendEvent(focus, &repeated);
}

void when_box_appears(const std::function<void(QDialog&)>& action) {
  QTimer::singleShot(1, [action] {
    auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    box ? action(*box) : when_box_appears(action);
  });
}

// Waits for the next message box, calls `look` and presses OK. The result becomes the box's text.
std::shared_ptr<std::string> answer(const std::function<void(QDialog&)>& look = nullptr) {
  auto message = std::make_shared<std::string>();
  when_box_appears([message, look](QDialog& box) {
    *message = form_text(box.findChild<QPlainTextEdit*>()->toPlainText());
    if (look)
      look(box);
    box.findChild<QPushButton*>()->click();
  });
  return message;
}

Names rows(const QAbstractItemView& list, const QModelIndex& parent = {}) {
  Names names;
  for (int i = 0; i < list.model()->rowCount(parent); ++i)
    names.push_back(list.model()->index(i, 0, parent).data().toString().toStdString());
  return names;
}

}  // namespace

TEST_F(TheWindow, FollowsTheLayoutAtAnySize) {
  EXPECT_EQ(window.size(), QSize(681, 496));
  const QSize smallest = window.minimumSize();
  constexpr QSize frame(16, 40), small_screen(1280, 800);
  EXPECT_EQ(((smallest + frame) * 2).boundedTo(small_screen), (smallest + frame) * 2);
  EXPECT_EQ(window.windowTitle().toStdString(), window_caption);
  EXPECT_FALSE(window.windowIcon().pixmap(48).isNull());
  for (const QSize size : {QSize(681, 496), QSize(711, 516), smallest}) {
    window.resize(size);
    for (const ControlLayout& row : layout()) {
      const QWidget& shown = widget(row.name);
      const Place at = place_of(row, size.width(), size.height(), window.logicalDpiX());
      EXPECT_EQ(shown.pos(), QPoint(at.left, at.top)) << row.name;
      EXPECT_TRUE(row.sized_to_text || shown.size() == QSize(at.width, at.height)) << row.name;
      EXPECT_EQ(shown.isHidden(), !row.visible) << row.name;
      EXPECT_TRUE(window.rect().contains(shown.geometry())) << row.name;
    }
  }
}

TEST_F(TheWindow, ClipsNoCaptionAndKeepsFontsThatFit) {
  EXPECT_EQ(widget("Command3").font().pointSizeF(), 18);
  for (Control* label : {&form.Label4, &form.Label6, &form.Label8})
    label->set_text("100000");
  form.Label11.set_text("AMD64 type");
  form.Label12.set_text("<b>family</b>");
  form.Label18.set_text("Windows_NT O.S.");
  form.Label19.set_visible(true);
  for (const QSize size : {window.minimumSize(), QSize(681, 496)}) {
    window.resize(size);
    for (const ControlLayout& row : layout()) {
      if (row.kind != Kind::button && row.kind != Kind::label)
        continue;
      const QWidget& shown = widget(row.name);
      const QString caption = shown.property("text").toString();
      const Room room = caption_room(row, form, size.width(), window.logicalDpiX());
      EXPECT_EQ(caption.toStdString(), control_of(row, form).text());
      EXPECT_TRUE(fits(shown.font(), caption, room)) << row.name;
      EXPECT_GE(shown.fontInfo().pixelSize(), 6) << row.name;
      EXPECT_EQ(shown.font() == font_of(row.font), fits(font_of(row.font), caption, room))
          << row.name;
      if (!row.sized_to_text)
        continue;
      EXPECT_GE(shown.width(), QFontMetrics(shown.font()).horizontalAdvance(caption)) << row.name;
      EXPECT_LE(shown.width(), room.width + 1) << row.name;
    }
  }
}

TEST_F(TheWindow, TellsAScreenReaderWhatItShows) {
  form.Label4.set_text("9");
  select_drive(form, "C:");
  QStringList names;
  const QAccessibleInterface* shown = QAccessible::queryAccessibleInterface(&window);
  for (int i = 0; i < shown->childCount(); ++i)
    names.append(shown->child(i)->text(QAccessible::Name));
  for (const char* name :
       {"drive: C:", "folders", "files of the folder", "found galaxy files", "fixed galaxy files",
        "progress: stage ", "stage: 0", "progress: of 2", "galaxies updated, counted from 0: 9",
        "progress: galaxies out of", "galaxies found, counted from 0: 0", "progress: updated",
        "find galaxies", "Please wait processing"})
    EXPECT_TRUE(names.contains(name)) << name;
  EXPECT_EQ(names.size(), static_cast<int>(layout().size()) - 1);
  EXPECT_FALSE(names.contains("silent mode the buttons do not work"));
}

TEST_F(TheWindow, IsUsedByKeyboard) {
  form.Command2.set_enabled(true);
  form.Command7.set_enabled(true);
  widget("Drive1").setFocus();
  for (const ControlLayout& row : layout()) {
    if (row.kind == Kind::label)
      continue;
    ASSERT_EQ(focused(), row.name);
    press_key(Qt::Key_Tab);
  }
  EXPECT_EQ(focused(), "Drive1");
}

// A key that is held down, and one that was pressed before the user has seen the result.
TEST_F(TheWindow, EveryPressNeedsAKeyPressOfItsOwn) {
  widget("Command1").setFocus();
  hold_key(Qt::Key_Return);
  EXPECT_EQ(state(), "1011110 0");
  press_key(Qt::Key_Return);
  EXPECT_EQ(state(), "0111110 1");
  EXPECT_EQ(focused(), "Command2");
  press_key(Qt::Key_Return);
  press_key(Qt::Key_Space);
  EXPECT_EQ(state(), "0111110 1");
  QTest::qWait(QApplication::doubleClickInterval() + 1);
  hold_key(Qt::Key_Enter);
  EXPECT_EQ(state(), "0111110 1");
  press_key(Qt::Key_Space);
  EXPECT_EQ(state(), "1011110 2");
  EXPECT_EQ(focused(), "Command1");

  const auto message = answer([&](QDialog& box) {
    press_key(Qt::Key_Return);
    hold_key(Qt::Key_Return);
    EXPECT_TRUE(box.isVisible());
  });
  window.message_box("text");
  EXPECT_EQ(*message, "text");

  hold_key(Qt::Key_Space, &widget("Text1"));
  EXPECT_EQ(text("Text1"), "c.galaxy\r\na.galaxy\r\nb.galaxy\r\nown.galaxy\r\n ");
}

TEST_F(TheWindow, GoesThroughItsStatesAndShowsByThePointerThatItIsBusy) {
  write_file(machine.user_folder / "sub/damaged.galaxy", "one line");
  const auto pointer = [] {
    const QCursor* cursor = QApplication::overrideCursor();
    return cursor ? cursor->shape() : Qt::BlankCursor;
  };
  EXPECT_EQ(state(), "1011110 0");
  EXPECT_EQ(widget("Command5").toolTip().toStdString(), form.pathlist[0]);
  auto& box = widget<QPlainTextEdit>("Text1");
  QTest::keyClicks(&box, "my own");
  QTest::keyClick(&box, Qt::Key_Return);

  const std::string shown = form.Dir1.path();
  bool searched = false;
  QTimer::singleShot(0, [&] {
    searched = form.searching;
    EXPECT_EQ(pointer(), Qt::WaitCursor);
    EXPECT_EQ(state(), "1011110 0");
    for (const char* button : {"Command1", "Command4", "Command6"})
      click(button);
    double_click("Z:\\");
    QTest::keyClick(&widget("Drive1"), Qt::Key_Up);
    EXPECT_EQ(form.Dir1.path(), shown);
    EXPECT_EQ(widget<QComboBox>("Drive1").currentText(), "Z:");
    QTest::keyClicks(&box, "mine");
  });
  click("Command1");
  EXPECT_TRUE(searched);
  EXPECT_EQ(pointer(), Qt::BlankCursor);
  EXPECT_EQ(state(), "0111110 1");
  QTest::keyClick(&box, Qt::Key_Home, Qt::ControlModifier);
  QTest::keyClicks(&box, "<b>");
  EXPECT_EQ(form.Text1.text(), "<b>my own\r\nminec.galaxy\r\ndamaged.galaxy\r\na.galaxy\r\n"
                               "b.galaxy\r\nown.galaxy\r\n");
  EXPECT_EQ(text("Text1"), form.Text1.text());
  EXPECT_EQ(widget<QLabel>("Label6").text(), "4");

  bool alive = false;
  QTimer::singleShot(0, [&, before = form.Dir1.path()] {
    alive = form.converting;
    for (const char* button : {"Command1", "Command2", "Command3", "Command5"})
      click(button);
    double_click("C:\\");
    EXPECT_EQ(form.Dir1.path(), before);
    EXPECT_EQ(state(), "0111110 2");
  });
  const auto message = answer([&](QDialog&) {
    EXPECT_TRUE(alive);
    EXPECT_EQ(state(), "0111110 2");
    EXPECT_EQ(pointer(), Qt::ArrowCursor);
  });
  click("Command2");
  EXPECT_NE(message->find("damaged.galaxy"), std::string::npos);
  EXPECT_EQ(pointer(), Qt::BlankCursor);
  EXPECT_EQ(state(), "1011110 2");
  EXPECT_EQ(text("Text2"), "c.galaxy\r\na.galaxy\r\nb.galaxy\r\n");
  EXPECT_EQ(read_file(machine.user_folder / "sub/c.galaxy"), converted_map);
}

TEST_F(TheWindow, ShowsFoldersByMouseAndKeyboard) {
  fs::create_directories(machine.drive_c / "Games/vora/deep/deeper");
  click("Command4");
  EXPECT_EQ(rows(folders), Names{"C:\\"});
  EXPECT_EQ(rows(folders, item("Games")), Names{"vora"});
  EXPECT_EQ(rows(folders, item("vora")), (Names{"deep", "galaxies"}));
  EXPECT_TRUE(folders.isExpanded(item("vora")));
  EXPECT_EQ(folders.currentIndex(), item("vora"));

  folders.setFocus();
  press_key(Qt::Key_Down);
  press_key(Qt::Key_Down);
  press_key(Qt::Key_Return);
  EXPECT_EQ(form.Dir1.path(), "C:\\Games\\vora\\galaxies");
  const auto& list = widget<QListView>("File1");
  EXPECT_EQ(rows(list), Names{"own.galaxy"});
  EXPECT_EQ(list.model()->index(0, 0).data(Qt::ToolTipRole), "own.galaxy");
  double_click("C:\\");
  EXPECT_EQ(form.Dir1.path(), "C:\\");
  EXPECT_EQ(rows(list), Names{});
  double_click("Games");
  EXPECT_EQ(form.Dir1.path(), "C:\\Games");

  QTest::keyClick(&widget("Drive1"), Qt::Key_Up);
  EXPECT_EQ(form.Dir1.path(), "C:\\");
}

TEST_F(TheWindow, ShowsMessagesAsPlainTextOnScreen) {
  std::string long_text = "<b>names</b>";
  for (int i = 0; i < 5000; ++i)
    long_text += "\r\nC:\\users\\me\\a folder\\map " + std::to_string(i) + ".galaxy";
  for (const std::string& text : {std::string("short & <i>plain</i>"), long_text}) {
    const auto message = answer([](QDialog& box) {
      EXPECT_EQ(box.windowTitle().toStdString(), program_title);
      EXPECT_TRUE(box.screen()->availableGeometry().contains(box.frameGeometry()));
      const auto& shown = *box.findChild<QPlainTextEdit*>();
      EXPECT_TRUE(shown.isReadOnly());
      EXPECT_TRUE(shown.textInteractionFlags() & Qt::TextSelectableByKeyboard);
    });
    window.message_box(text);
    EXPECT_EQ(*message, text);
  }
}

TEST_F(TheWindow, EndsAtOnce) {
  const auto close = [&] { window.close(); };
  const auto exit = [&] { click("Command3"); };
  const auto during_search = [&](const std::function<void()>& action) {
    QTimer::singleShot(0, action);
    click("Command1");
    std::_Exit(42);  // the search went on to its end
  };
  EXPECT_EXIT(exit(), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(close(), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(during_search(close), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(during_search(exit), testing::ExitedWithCode(0), "");
  form.silentmode = true;
  EXPECT_EXIT(close(), testing::ExitedWithCode(1), "");
}

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const QTemporaryDir scratch;  // for the machines of children that end at once
  qputenv("TMPDIR", scratch.path().toUtf8());
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
