// The window itself: its layout, its states, and what a user does with mouse and keyboard.
#include "platform/prefix/prefix_files.h"
#include "platform/prefix/prefix_system.h"
#include "tests/support/prefix/machine_of.h"
#include "ui/handlers.h"
#include "ui/qt/fonts.h"
#include "ui/qt/qt_screen.h"
#include "ui/qt/texts.h"

#include <gtest/gtest.h>

#include <QAbstractItemModel>
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

#include <ctime>

namespace fs = std::filesystem;

namespace {

// A machine whose folders can be made to look crowded.
struct CrowdedFiles : PrefixFiles {
  using PrefixFiles::PrefixFiles;

  Result<std::vector<Entry>> list(const std::string& folder, std::string_view pattern) override {
    if (crowd == 0)
      return PrefixFiles::list(folder, pattern);
    std::vector<Entry> entries;
    for (int i = 0; i < 2 * crowd; ++i)
      entries.push_back({"a name of some length " + std::to_string(i), i < crowd, false});
    return entries;
  }

  int crowd = 0;  // how many files and folders each has
};

// The program in its window, on a machine.
struct WindowProgram {
  explicit WindowProgram(const TestMachine& machine, const std::string& arguments = "")
      : files(machine_of(machine)), system(machine_of(machine), arguments),
        form(files, system, screen) {
    screen.open(form);
  }

  CrowdedFiles files;
  PrefixSystem system;
  QtScreen screen;
  Form1 form;

  template <class Widget = QWidget> Widget& widget(const char* name) const {
    return *screen.window->findChild<Widget*>(name);
  }
  void click(const char* button) const { widget<QPushButton>(button).click(); }
  std::string caption(const char* label) const {
    return widget<QLabel>(label).text().toStdString();
  }
  std::string text(const char* box) const {
    QApplication::processEvents();
    return widget<QPlainTextEdit>(box).toPlainText().toStdString();
  }
  std::string usable(std::initializer_list<const char*> names) const {
    std::string result;
    for (const char* name : names)
      result += widget(name).isEnabled() ? "1" : "0";
    return result;
  }
};

// When the next message box stands, looks at it and presses OK. Gives the box's text.
std::shared_ptr<std::string> answer(const std::function<void(QDialog&)>& look = nullptr) {
  auto said = std::make_shared<std::string>();
  QTimer::singleShot(0, [said, look] {
    auto* box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    *said = form_text(box->findChild<QPlainTextEdit*>()->toPlainText());
    if (look)
      look(*box);
    box->findChild<QPushButton*>()->click();
  });
  return said;
}

class TheWindow : public testing::Test {
protected:
  TheWindow() {
    machine.write_data();
    machine.install("vora", {1, 2, 3, 4});
    write_file(machine.user_folder / "settings.txt", "");
    for (const char* name : {"a.galaxy", "b.galaxy", "sub/c.galaxy"})
      write_file(machine.user_folder / name, old_map);
    write_file(machine.drive_c / "Games/vora/galaxies/own.galaxy", old_map);
  }

  WindowProgram& started() {
    program.emplace(machine);
    load_form(program->form);
    return *program;
  }

  TestMachine machine;
  std::optional<WindowProgram> program;
};

std::vector<std::string> rows(const QAbstractItemModel& model, const QModelIndex& above = {}) {
  std::vector<std::string> names;
  for (int i = 0; i < model.rowCount(above); ++i)
    names.push_back(model.index(i, 0, above).data().toString().toStdString());
  return names;
}

// The row of a folder in the directory list.
QModelIndex folder(const QTreeView& tree, const char* name) {
  return tree.model()
      ->match(tree.model()->index(0, 0), Qt::DisplayRole, name, 1,
              Qt::MatchExactly | Qt::MatchRecursive)
      .value(0);
}

void double_click(QTreeView& tree, const char* name) {
  tree.scrollTo(folder(tree, name));
  const QPoint at = tree.visualRect(folder(tree, name)).center();
  QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, at);
  QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, at);
}

}  // namespace

TEST_F(TheWindow, EveryControlIsAtItsPlace) {
  const WindowProgram& window = started();
  QWidget& client = *window.screen.window;
  EXPECT_EQ(client.size(), QSize(681, 496));
  EXPECT_EQ(client.minimumSize(), client.size());
  EXPECT_FALSE(client.windowIcon().pixmap(48).isNull());
  const int twips_per_pixel = 1440 / client.logicalDpiX();
  for (const ControlLayout& row : layout()) {
    const QRect at = window.widget(row.name).geometry();
    EXPECT_EQ(at.topLeft() * twips_per_pixel, QPoint(row.left, row.top)) << row.name;
    const QSize size =
        row.sized_to_text ? QSize(row.width, row.height) : at.size() * twips_per_pixel;
    EXPECT_EQ(size, QSize(row.width, row.height)) << row.name;
    EXPECT_EQ(window.widget(row.name).isHidden(), !row.visible) << row.name;
    const bool captioned = row.kind == Kind::button || row.kind == Kind::label;
    EXPECT_EQ(window.widget(row.name).accessibleName().isEmpty(), captioned) << row.name;
  }
}

TEST_F(TheWindow, TheListsGrowWithIt) {
  const WindowProgram& window = started();
  const struct {
    const char* name;
    QRect growth;
  } cases[] = {
      {"File1", {0, 0, 10, 20}},   {"Text1", {10, 0, 10, 20}}, {"Text2", {20, 0, 10, 20}},
      {"Label10", {20, 0, 10, 0}}, {"Command3", {0, 0, 0, 0}},
  };
  std::map<std::string, QRect> before;
  for (const auto& c : cases)
    before[c.name] = window.widget(c.name).geometry();
  window.screen.window->resize(681 + 30, 496 + 20);
  for (const auto& c : cases) {
    const QRect now = window.widget(c.name).geometry(), was = before[c.name];
    EXPECT_EQ(QRect(now.topLeft() - was.topLeft(), now.size() - was.size()), c.growth) << c.name;
  }
}

TEST_F(TheWindow, NoCaptionIsClipped) {
  WindowProgram& window = started();
  window.form.Label4.set_text("100000");
  window.form.Label6.set_text("100000");
  window.form.Label8.set_text("1000");
  window.form.Label11.set_text("AMD64 type");
  window.form.Label18.set_text("Windows_NT O.S.");
  window.form.Label19.set_visible(true);
  for (const ControlLayout& row : layout()) {
    const QWidget& widget = window.widget(row.name);
    const QString caption = widget.property("text").toString();
    EXPECT_TRUE(row.kind > Kind::text_box || row.kind == Kind::button || caption.isEmpty());
    if (row.sized_to_text) {
      EXPECT_GE(widget.width(), QFontMetrics(widget.font()).horizontalAdvance(caption)) << row.name;
      EXPECT_LE(widget.geometry().right() * 15, row.left + room_of(row, window.form)) << row.name;
    } else if (row.kind == Kind::button || row.kind == Kind::label) {
      EXPECT_TRUE(fits(widget.font(), caption, room_for(row, window.form, widget))) << row.name;
    }
    EXPECT_GE(widget.fontInfo().pixelSize(), 6) << row.name;
  }
}

TEST_F(TheWindow, TabGoesThroughTheTable) {
  WindowProgram& window = started();
  window.form.Command2.set_enabled(true);
  window.form.Command7.set_enabled(true);
  window.screen.window->activateWindow();
  window.widget("Drive1").setFocus();
  for (const ControlLayout& row : layout()) {
    if (row.kind == Kind::label)
      continue;
    ASSERT_NE(QApplication::focusWidget(), nullptr);
    EXPECT_EQ(QApplication::focusWidget()->objectName().toStdString(), row.name);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  }
  EXPECT_EQ(QApplication::focusWidget()->objectName().toStdString(), "Drive1");
  window.widget("Command1").setFocus();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  EXPECT_EQ(window.caption("Label8"), "1");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
  EXPECT_EQ(window.caption("Label8"), "2");
  EXPECT_EQ(QApplication::focusWidget()->objectName().toStdString(), "Command1");
}

TEST_F(TheWindow, GoesThroughItsStates) {
  write_file(machine.user_folder / "sub/damaged.galaxy", "one line");
  WindowProgram& window = started();
  const auto buttons = {"Command1", "Command2", "Command3", "Command4",
                        "Command5", "Command6", "Command7"};
  EXPECT_EQ(window.screen.window->windowTitle().toStdString(), window_caption);
  EXPECT_EQ(window.usable(buttons), "1011110");
  EXPECT_EQ(window.widget("Command5").toolTip().toStdString(), window.form.pathlist[0]);

  const std::string shown = window.form.Dir1.path();
  bool looked = false;
  QTimer::singleShot(0, [&] {
    looked = true;
    EXPECT_TRUE(window.form.searching);
    EXPECT_EQ(window.usable(buttons), "1011110");
    for (const char* button : {"Command1", "Command4", "Command6"})
      window.click(button);
    double_click(window.widget<QTreeView>("Dir1"), "Z:\\");
    QTest::keyClick(&window.widget("Drive1"), Qt::Key_Up);
    EXPECT_EQ(window.form.Dir1.path(), shown);
    EXPECT_EQ(window.widget<QComboBox>("Drive1").currentText(), "Z:");
    QTest::keyClicks(&window.widget("Text1"), "mine");
  });
  window.click("Command1");
  EXPECT_TRUE(looked);
  EXPECT_EQ(window.usable(buttons), "0111110");
  EXPECT_EQ(window.text("Text1"), "minec.galaxy\ndamaged.galaxy\na.galaxy\nb.galaxy\nown.galaxy\n");
  EXPECT_EQ(window.caption("Label8") + " " + window.caption("Label6"), "1 4");

  const auto said = answer([&](QDialog&) { EXPECT_EQ(window.usable(buttons), "0111110"); });
  window.click("Command2");
  EXPECT_NE(said->find("damaged.galaxy"), std::string::npos);
  EXPECT_EQ(window.usable(buttons), "1011110");
  EXPECT_EQ(window.text("Text2"), "c.galaxy\na.galaxy\nb.galaxy\n");
  EXPECT_EQ(window.caption("Label8"), "2");
  EXPECT_EQ(read_file(machine.user_folder / "sub/c.galaxy"), converted_map);
  EXPECT_EQ(read_file(machine.user_folder / "sub/c.galold"), old_map);
  EXPECT_EQ(read_file(machine.drive_c / "Games/vora/galaxies/own.galaxy"), old_map);

  window.click("Command1");
  EXPECT_EQ(window.caption("Label8"), "3");
  EXPECT_EQ(window.usable(buttons), "0111110");
}

TEST_F(TheWindow, TheListsFollowMouseAndKeyboard) {
  fs::create_directories(machine.drive_c / "Games/vora/deep/deeper");
  const WindowProgram& window = started();
  auto& folders = window.widget<QTreeView>("Dir1");
  auto& files = window.widget<QListView>("File1");
  auto& drives = window.widget<QComboBox>("Drive1");
  window.screen.window->activateWindow();

  window.click("Command4");
  EXPECT_EQ(rows(*folders.model()), std::vector<std::string>{"C:\\"});
  EXPECT_EQ(rows(*folders.model(), folder(folders, "Games")), std::vector<std::string>{"vora"});
  EXPECT_EQ(rows(*folders.model(), folder(folders, "vora")),
            (std::vector<std::string>{"deep", "galaxies"}));
  EXPECT_TRUE(folders.isExpanded(folder(folders, "vora")));
  EXPECT_EQ(folders.currentIndex(), folder(folders, "vora"));

  folders.setFocus();
  QTest::keyClick(&folders, Qt::Key_Down);
  QTest::keyClick(&folders, Qt::Key_Down);
  QTest::keyClick(&folders, Qt::Key_Return);
  EXPECT_EQ(window.form.Dir1.path(), "C:\\Games\\vora\\galaxies");
  EXPECT_EQ(rows(*files.model()), std::vector<std::string>{"own.galaxy"});
  EXPECT_EQ(files.model()->index(0, 0).data(Qt::ToolTipRole).toString(), "own.galaxy");
  double_click(folders, "C:\\");
  EXPECT_EQ(window.form.Dir1.path(), "C:\\");
  EXPECT_EQ(rows(*files.model()), std::vector<std::string>{});
  double_click(folders, "Games");
  EXPECT_EQ(window.form.Dir1.path(), "C:\\Games");

  QTest::keyClick(&drives, Qt::Key_Up);
  EXPECT_EQ(window.form.Dir1.path(), "C:\\");
  EXPECT_EQ(window.form.rootpath, "C:\\");

  fs::remove_all(machine.drive_c / "Games");
  const auto said = answer();
  double_click(folders, "Games");
  EXPECT_NE(said->find("C:\\Games"), std::string::npos);
  EXPECT_EQ(window.form.Dir1.path(), "C:\\");
}

TEST_F(TheWindow, TypingStaysAndIsAppendedTo) {
  WindowProgram& window = started();
  auto& box = window.widget<QPlainTextEdit>("Text1");
  QTest::keyClicks(&box, "my own");
  QTest::keyClick(&box, Qt::Key_Return);
  EXPECT_EQ(window.form.Text1.text(), "my own\r\n");
  window.click("Command1");
  QTest::keyClick(&box, Qt::Key_Home, Qt::ControlModifier);
  QTest::keyClicks(&box, "<b>");
  EXPECT_EQ(window.form.Text1.text(),
            "<b>my own\r\nc.galaxy\r\na.galaxy\r\nb.galaxy\r\nown.galaxy\r\n");
  EXPECT_EQ(form_text(box.toPlainText()), window.form.Text1.text());
}

// Ten times as many take near ten times the work, where quadratic work would take a hundred.
TEST_F(TheWindow, ManyNamesTakeNoMoreWorkEach) {
  WindowProgram& window = started();
  const auto growth = [](const std::function<void(int count)>& show) {
    const auto taken = [&](int count) {
      const std::clock_t start = std::clock();
      show(count);
      QApplication::processEvents();
      return static_cast<double>(std::clock() - start);
    };
    const double few = taken(2000);
    return taken(20000) / few;
  };
  const auto fill_box = [&](int count) {
    for (int i = 0; i < count; ++i)
      window.form.Text1.append("a map of some length.galaxy\r\n");
  };
  const auto fill_lists = [&](int count) {
    window.files.crowd = count;
    EXPECT_TRUE(bool(window.form.Dir1.set_path(count > 2000 ? "C:\\" : "C:\\users")));
  };
  EXPECT_LT(growth(fill_box), 40);
  EXPECT_LT(growth(fill_lists), 40);
}

TEST_F(TheWindow, AnEditionIsChosenOnAMachineWithBoth) {
  machine.install("voratarnfall", {5, 6, 7, 8});
  write_file(machine.expansion_folder / "t.galaxy", old_map);
  WindowProgram& window = started();
  EXPECT_EQ(window.usable({"Command6", "Command7"}), "11");
  const auto said = answer();
  window.click("Command4");
  EXPECT_EQ(*said, "No folder is known yet for program space galaxies.");

  window.click("Command7");
  EXPECT_EQ(window.usable({"Command6", "Command7"}), "00");
  EXPECT_EQ(window.widget("Command4").toolTip(), "C:\\Games\\voratarnfall\\");
  EXPECT_EQ(rows(*window.widget<QListView>("File1").model()), std::vector<std::string>{"t.galaxy"});
  window.click("Command1");
  window.click("Command2");
  EXPECT_EQ(window.text("Text2"), "t.galaxy\n");
  EXPECT_EQ(read_file(machine.expansion_folder / "t.galaxy"), fixed_map);
}

TEST_F(TheWindow, MessagesStayOnScreenAndArePlainText) {
  WindowProgram& window = started();
  std::string long_text = "<b>names</b>";
  for (int i = 0; i < 5000; ++i)
    long_text += "\r\nC:\\users\\me\\a folder\\map " + std::to_string(i) + ".galaxy";
  for (const std::string& text : {std::string("short & <i>plain</i>"), long_text}) {
    const auto said = answer([](QDialog& box) {
      EXPECT_EQ(box.windowTitle().toStdString(), program_title);
      EXPECT_TRUE(box.isModal());
      EXPECT_EQ(box.findChildren<QPushButton*>().size(), 1);
      EXPECT_TRUE(box.screen()->availableGeometry().contains(box.frameGeometry()));
      const auto& shown = *box.findChild<QPlainTextEdit*>();
      EXPECT_TRUE(shown.isReadOnly());
      EXPECT_TRUE(shown.textInteractionFlags() & Qt::TextSelectableByKeyboard);
    });
    window.screen.message_box(text);
    EXPECT_EQ(*said, text);
  }
}

TEST_F(TheWindow, EndsAtOnce) {
  WindowProgram& window = started();
  EXPECT_EXIT(window.click("Command3"), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(window.screen.window->close(), testing::ExitedWithCode(0), "");
  const auto during = [&](const std::function<void()>& action) {
    QTimer::singleShot(0, action);
    window.click("Command1");
    std::_Exit(42);  // the search went on to its end
  };
  EXPECT_EXIT(during([&] { window.screen.window->close(); }), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(during([&] { window.click("Command3"); }), testing::ExitedWithCode(0), "");
  window.form.trouble = true;
  EXPECT_EXIT(window.screen.window->close(), testing::ExitedWithCode(1), "");
}

TEST_F(TheWindow, StartUpEndsInItsOtherWays) {
  const auto start = [&](const std::string& arguments, const std::function<void()>& meanwhile) {
    WindowProgram window(machine, arguments);
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, meanwhile);
    timer.start(0);
    load_form(window.form);
    std::_Exit(42);
  };
  const auto silent = [&] {
    for (QWidget* each : QApplication::topLevelWidgets()) {
      const auto* notice = each->findChild<QLabel*>("Label19");
      if (notice && notice->isVisible() && !each->findChild<QWidget*>("Command3")->isEnabled())
        std::_Exit(43);  // seen while the run goes on
    }
  };
  EXPECT_EXIT(start("/silent", silent), testing::ExitedWithCode(43), "");
  EXPECT_EXIT(start("/silent", [] {}), testing::ExitedWithCode(0), "");
  const auto press = [] {
    if (auto* box = QApplication::activeModalWidget()) {
      std::fprintf(stderr, "%s\n", qPrintable(box->findChild<QPlainTextEdit*>()->toPlainText()));
      box->findChild<QPushButton*>()->click();
    }
  };
  EXPECT_EXIT(start("/x", press), testing::ExitedWithCode(1), "Invalid argument: /x");
  write_file(machine.data / "targetvoraver.txt", "9.9.9.9\r\n");
  EXPECT_EXIT(start("/s", press), testing::ExitedWithCode(1), "need vora version :9.9.9.9:");
}

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const QTemporaryDir scratch;  // children that end at once leave their machines there
  qputenv("TMPDIR", scratch.path().toUtf8());
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
