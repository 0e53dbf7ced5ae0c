// The registry's text form, read and changed, whole and damaged; and the two files of a machine in
// a folder behind the shell object's three operations.
#include "platform/prefix/registry.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <string>

namespace fs = std::filesystem;

using Tree = std::map<std::string, std::string>;

namespace {

using Type = RegistryValue::Type;

// As Wine writes it.
const std::string sample = R"(WINE REGISTRY Version 2
;; All keys relative to \\Machine

#arch=win64

[Software\\Tools] 1700000000
#time=1da1b2c3d4e5f60
@="the tools"
"Path"="C:\\Tools"
"Size"=dword:0000001f

[Software\\Tools\\Odd \[name\] here] 1700000001
#time=1da1b2c3d4e5f61
#class="a class"
#link
"Data"=hex:01,02,ff
"Long"=hex(3):00,01,02,\
  03,04,\
  05
"quote\"d"="yes"

[Software\\Toolset] 1700000002
"Path"=str(2):"%SystemRoot%\\set"
)";

// What a value is, as one text to compare.
std::string show(const std::optional<RegistryValue>& value) {
  if (!value)
    return "none";
  const char* const types[] = {"text ", "expand ", "number ", "binary ", "other"};
  const std::string number = value->type == Type::number ? std::to_string(value->number) : "";
  return types[static_cast<std::size_t>(value->type)] + value->text + number + value->bytes;
}

std::string data_of(const std::string& data) {
  return show(find_value("[K]\n\"v\"=" + data + "\n", "K", "v"));
}

std::string crlf(std::string text) {
  for (auto at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2))
    text.insert(at, "\r");
  return text;
}

RegistryValue text_value(const std::string& text) { return {.type = Type::text, .text = text}; }

TEST(RegistryText, FindsValues) {
  const struct {
    const char *key, *name;
    std::string shown;
  } cases[] = {
      {"Software\\Tools", "", "text the tools"},
      {"Software\\Tools", "Path", "text C:\\Tools"},
      {"software\\TOOLS", "pATH", "text C:\\Tools"},
      {"Software\\Tools", "Size", "number 31"},
      {"Software\\Tools\\Odd [name] here", "Data", "binary \x01\x02\xff"},
      {"Software\\Tools\\Odd [NAME] here", "Long", "binary " + std::string("\0\1\2\3\4\5", 6)},
      {"Software\\Tools\\Odd [name] here", "quote\"d", "text yes"},
      {"Software\\Toolset", "Path", "expand %SystemRoot%\\set"},
      {"Software\\Toolset", "", "none"},
      {"Software\\Toolset", "Size", "none"},
      {"Software\\Tools\\Odd", "Data", "none"},
      {"Software\\Tool", "Path", "none"},
      {"Software", "", "none"},
      {"Tools", "Path", "none"},
      {"", "", "none"},
      {"Software\\Tools] 1700000000", "Path", "none"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(show(find_value(sample, each.key, each.name)), each.shown) << each.key;
    EXPECT_EQ(show(find_value(crlf(sample), each.key, each.name)), each.shown) << each.key;
  }
}

TEST(RegistryText, ReadsEveryForm) {
  const struct {
    const char *data, *shown;
  } cases[] = {
      {R"("")", "text "},
      {R"("\1x\018\1018")", "text \1x\1"
                            "8A8"},
      {R"("\x41\x0041b\x41z\xzz")", "text AAbAzxzz"},
      {R"("\xe9\xe9\x20ac")", "text \u00e9\u00e9\u20ac"},
      {R"("\xd83d-\xde00\xd83d")", "text \uFFFD-\uFFFD\uFFFD"},
      {R"("\xd83d\xd83d\xde00")", "text \uFFFD\U0001f600"},
      {R"("\.")", "text ."},
      {"\"caf\u00e9\"", "text caf\u00e9"},
      {R"("cut\0here")", "text cut"},
      {R"(str(1):"t")", "text t"},
      {R"(str(2):"%A%\\b")", "expand %A%\\b"},
      {R"(str(7):"one\0two\0")", "other"},
      {"dword:ffffffff", "number 4294967295"},
      {"dword:A", "number 10"},
      {"hex:", "binary "},
      {"hex(3):41,42", "binary AB"},
      {"hex(1):41,00,e9,00,3d,d8,00,de,00,00,42,00", "text A\u00e9\U0001f600"},
      {"hex(1):41,00,42", "text A"},
      {"hex(2):25,00,00,00", "expand %"},
      {"hex(4):01,02,00,80", "number 2147484161"},
      {"hex(4):01,02", "other"},
      {"hex(7):41,00,00,00", "other"},
      {"hex(ffff):41", "other"},
      {"hex(0):", "other"},
      {"hex:41,\\\n  42,\\\n43", "binary ABC"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(data_of(each.data), each.shown) << each.data;
}

TEST(RegistryText, MalformedLinesCountAsMissing) {
  for (
      const char* data :
      {"",           "\"open",        "\"open\\\"", "\"open\\",        "str(2):open", "str(2)\"a\"",
       "str(:\"a\"", "text",          "dword:",     "dword:123456789", "dword:xyz",   "dword:-1",
       "hex",        "hex(",          "hex(3",      "hex(3)41",        "hex(zz):41",  "hex:4x",
       "hex():41",   "str():dword:1", "hex:123",    "hex:41 42",       "hex:,41",     "-"})
    EXPECT_EQ(data_of(data), "none") << data;
  for (const char* text : {"", "[", "[K", "[K\n\"v\"=\"x\"", "[K]", "[K]\n\"v", "[K]\n\"v\"",
                           "[K]\n\"v\"=", "K]\n", "\"v\"=\"x\"\n[K]\n", "[K\\]\n\"v\"=\"x\"",
                           "[]\n\"v\"=\"x\"", "[K]\nv=\"x\"\n", "[K]\n;\"v\"=\"x\"\n",
                           "[K]\n#\"v\"=\"x\"\n", "[K]\n\"v\" \"x\"\n", "[K]\n[L]\n\"v\"=\"x\"\n"})
    EXPECT_EQ(show(find_value(text, "K", "v")), "none") << text;
}

TEST(RegistryText, ComparesNamesAsTheyAreMeant) {
  const struct {
    const char *text, *key, *name;
  } cases[] = {
      {"[K\\xe9y\\\\b\\x41]\n\"\\xc9t\\xe9\"=\"found\"", "K\u00c9Y\\Ba", "\u00e9t\u00c9"},
      {"[\\[\\]]\n@=\"found\"", "[]", ""},
      {"[K]\n\"@\"=\"found\"", "K", "@"},
      {"[K]\n\"\"=\"found\"\n\"@\"=\"other\"", "K", ""},
      {"[K\\x5cz]\n@=\"found\"", "K\\z", ""},
      {"[]\n@=\"found\"", "", ""},
  };
  for (const auto& each : cases)
    EXPECT_EQ(show(find_value(each.text, each.key, each.name)), "text found") << each.text;
}

TEST(RegistryText, TheLastOfSeveralWins) {
  const std::string text = "[K]\n\"v\"=\"1\"\n\"V\"=\"2\"\n[L]\n\"v\"=\"x\"\n[k]\n\"v\"=\"3\"\n";
  EXPECT_EQ(show(find_value(text, "K", "v")), "text 3");
  EXPECT_EQ(show(find_value(text + "[K]\n\"v\"=\"cut", "K", "v")), "text 3");
  EXPECT_EQ(show(find_value(text + "[K]\n", "K", "v")), "text 3");
  const auto changed = with_value(text, "K", "v", text_value("4"));
  EXPECT_EQ(show(find_value(changed, "K", "v")), "text 4");
  EXPECT_EQ(without_value(changed, "K", "v"), "[K]\n[L]\n\"v\"=\"x\"\n[k]\n");
}

TEST(RegistryText, WritesOnlyItsOwnLines) {
  const struct {
    const char *key, *name, *old, *now;
  } cases[] = {
      {"Software\\TOOLS", "PATH", "\"Path\"=\"C:\\\\Tools\"\n", "\"PATH\"=\"new\"\n"},
      {"Software\\Tools", "", "@=\"the tools\"\n", "@=\"new\"\n"},
      {"Software\\Tools\\Odd [name] here", "Long",
       "\"Long\"=hex(3):00,01,02,\\\n  03,04,\\\n  05\n", "\"Long\"=\"new\"\n"},
      {"Software\\Tools", "More", "0000001f\n", "0000001f\n\"More\"=\"new\"\n"},
      {"Software\\Toolset", "", "\\\\set\"\n", "\\\\set\"\n@=\"new\"\n"},
      {"New\\Key [1]", "a\"b", "\\\\set\"\n",
       "\\\\set\"\n\n[New\\\\Key \\[1\\]]\n\"a\\\"b\"=\"new\"\n"},
  };
  for (const auto& each : cases) {
    auto expected = sample;
    expected.replace(expected.find(each.old), std::string(each.old).size(), each.now);
    EXPECT_EQ(with_value(sample, each.key, each.name, text_value("new")), expected);
    EXPECT_EQ(with_value(crlf(sample), each.key, each.name, text_value("new")), crlf(expected));
  }
}

TEST(RegistryText, WritesToDamagedTexts) {
  const struct {
    const char *old, *now;
  } cases[] = {
      {"", "WINE REGISTRY Version 2\n\n[K]\n\"v\"=\"n\"\n"},
      {"[K]", "[K]\n\"v\"=\"n\"\n"},
      {"[K]\r\n\"a\"=\"", "[K]\r\n\"a\"=\"\r\n\"v\"=\"n\"\r\n"},
      {"[K]\n\"v\"=\"cut", "[K]\n\"v\"=\"n\"\n"},
      {"[K]\n\"v\"=hex:00,\\", "[K]\n\"v\"=\"n\"\n"},
      {"[K]\n\"v\"=hex:00,\\\n[L]\n", "[K]\n\"v\"=\"n\"\n[L]\n"},
      {"[K]\n\"v\"=\"a\\\n\"w\"=\"b\"\n", "[K]\n\"v\"=\"n\"\n\"w\"=\"b\"\n"},
      {"[K]\n\n\n\n[L]\n", "[K]\n\"v\"=\"n\"\n\n\n\n[L]\n"},
      {"[K", "[K\n\n[K]\n\"v\"=\"n\"\n"},
      {"\n\n", "\n\n\n[K]\n\"v\"=\"n\"\n"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(with_value(each.old, "K", "v", text_value("n")), each.now) << each.old;
    EXPECT_EQ(show(find_value(each.now, "K", "v")), "text n");
  }
}

TEST(RegistryText, EscapesAsWineDoes) {
  const struct {
    RegistryValue value;
    std::string line;
  } cases[] = {
      {text_value("a\\b\"[c]"), R"("a\\b\"[c]")"},
      {text_value("\u00e9z\u00e9a\u00e9"), R"("\xe9z\x00e9a\xe9")"},
      {text_value("\U0001f600"), R"("\xd83d\xde00")"},
      {text_value("\a\b\t\n\v\f\r\x1b"), R"("\a\b\t\n\v\f\r\e")"},
      {text_value("\x01x\x01"
                  "7\x7f"),
       "\"\\1x\\0017\x7f\""},
      {text_value("\xff"
                  "z\xe9"
                  "a"),
       R"("\xfffdz\xfffda")"},
      {{.type = Type::expandable_text, .text = "%A%\\b"}, R"(str(2):"%A%\\b")"},
      {{.type = Type::number, .number = 0xBEEF}, "dword:0000beef"},
      {{.type = Type::binary, .bytes = std::string("\x00\xff", 2)}, "hex:00,ff"},
      {{.type = Type::binary}, "hex:"},
      {{.type = Type::binary, .bytes = std::string(30, '\1')},
       "hex:01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,01,\\\n"
       "  01,01,01,01,01,01,01"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(with_value("[K]\n", "K", "v", each.value), "[K]\n\"v\"=" + each.line + "\n");
  EXPECT_EQ(with_value(sample, "K", "v", {.type = Type::other}), sample);
}

TEST(RegistryText, EveryCharacterSurvivesTheRoundTrip) {
  std::string all;
  for (char c = 1; c < 0x7f; ++c)
    all += std::string{c, '7', c, 'f', c};
  all += "\u00e9"
         "1\u00e9g\u20ac\U0001f600\U0010ffff";
  const auto text = with_value("", "Key \\" + std::string("[\u00e9]a"), all, text_value(all));
  EXPECT_EQ(show(find_value(text, "Key \\[\u00e9]a", all)), "text " + all);
}

TEST(RegistryText, Removes) {
  const auto value = without_value(sample, "software\\tools\\odd [name] here", "long");
  auto expected = sample;
  expected.erase(expected.find("\"Long\""),
                 std::string("\"Long\"=hex(3):00,01,02,\\\n  03,04,\\\n  05\n").size());
  EXPECT_EQ(value, expected);
  EXPECT_EQ(without_value(sample, "Software\\Tools", "none"), sample);
  EXPECT_EQ(without_key(sample, "Software\\Tool"), sample);

  const auto first = sample.find("\n[Software\\\\Tools]"),
             last = sample.find("\n[Software\\\\Toolset]");
  EXPECT_EQ(without_key(sample, "software\\tools"), sample.substr(0, first) + sample.substr(last));
  EXPECT_EQ(without_key(sample, "Software\\Toolset"), sample.substr(0, last));
  EXPECT_EQ(without_key(sample, "Software"), sample.substr(0, first));
  EXPECT_EQ(without_key(crlf(sample), "Software"), crlf(sample.substr(0, first)));
  EXPECT_EQ(without_key("[A]\n[B]\n\n\n[A\\\\C]\n", "A"), "[B]\n");
}

TEST(RegistryText, LargeHostileTextsTakeLinearTime) {
  for (const char* piece : {"[", "[K]\n", "[K\\\\", "\"", "\\", "\"v\"=\"", "\"v\"=hex:\\\n", "\n",
                            "\r\n", "@=\n", "\"v\"=\"\\x", "00,", "\"v\"=hex:00,\\\n  00,\\\n"}) {
    std::string text = "[K]\n";
    while (text.size() < 1 << 20)
      text += piece;
    EXPECT_EQ(without_value(text, "K", "absent"), text);
    EXPECT_EQ(show(find_value(with_value(text, "K", "v", text_value("n")), "K", "v")), "text n");
  }
}

// A folder of its own for each test.
class RegistryFiles : public testing::Test {
protected:
  RegistryFiles() { fs::create_directory(folder); }

  TestMachine machine;
  const fs::path folder = machine.prefix / "registry";
  const fs::path system = folder / "system.reg", user = folder / "user.reg";
};

TEST_F(RegistryFiles, RootsChooseTheFile) {
  write_file(system, "[A\\\\B]\n@=\"key\"\n\"v\"=\"machine\"\n\n[]\n\"v\"=\"root\"\n");
  write_file(user, "[A\\\\B]\n\"v\"=\"user\"\n");
  Registry registry(folder);
  const struct {
    const char *path, *shown;
  } cases[] = {
      {"HKEY_LOCAL_MACHINE\\A\\B\\v", "text machine"},
      {"hklm\\a\\b\\V", "text machine"},
      {"HKEY_CURRENT_USER\\A\\B\\v", "text user"},
      {"hkcu\\A\\B\\v", "text user"},
      {"HKLM\\A\\B\\", "text key"},
      {"HKLM\\v", "text root"},
      {"HKLM\\A\\B", "none"},
      {"HKCU\\A\\B\\", "none"},
      {"HKEY_CLASSES_ROOT\\A\\B\\v", "none"},
      {"A\\B\\v", "none"},
      {"HKLM\\A\\\\B\\v", "none"},
      {"HKLM\\\\A\\B\\v", "none"},
      {"HKLM\\", "none"},
      {"HKLM", "none"},
      {"\\", "none"},
      {"", "none"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(show(registry.read(each.path)), each.shown) << each.path;
}

// A file is read in pieces: wherever the first one ends, keys are found whole.
TEST_F(RegistryFiles, KeysAreFoundAcrossPieces) {
  constexpr std::size_t piece = 1 << 16;
  const std::string large = "\"large\"=\"" + std::string(3 * piece, 'x') + "\"\n";
  for (std::size_t before = piece - 40; before < piece + 2; ++before) {
    write_file(system, "[Fill]\n" + std::string(before - 8, ';') + "\n[K\\\\A]\n\"v\"=\"first\"\n" +
                           large + "[Other]\n[K\\\\B]\n@=\"beside\"\n[K\\\\A]\n\"w\"=\"last\"\n");
    Registry registry(folder);
    EXPECT_EQ(show(registry.read("HKLM\\K\\A\\v")), "text first") << before;
    EXPECT_EQ(show(registry.read("HKLM\\K\\A\\w")), "text last") << before;
    EXPECT_EQ(show(registry.read("HKLM\\K\\B\\")), "text beside") << before;
    EXPECT_EQ(show(registry.read("HKLM\\K\\A\\large")).size(), 5 + 3 * piece) << before;
  }
}

TEST_F(RegistryFiles, WhatWasReadIsKnownUntilItIsChanged) {
  Registry registry(folder);
  EXPECT_FALSE(registry.read("HKLM\\A\\v"));
  EXPECT_EQ(tree(folder), Tree());
  write_file(system, "[A]\n\"v\"=\"late\"\n");
  EXPECT_FALSE(registry.read("HKLM\\A\\v"));
  EXPECT_TRUE(registry.write("HKLM\\A\\w", "new", "REG_SZ"));
  EXPECT_EQ(tree(folder), (Tree{{"system.reg", "[A]\n\"v\"=\"late\"\n\"w\"=\"new\"\n"}}));
  EXPECT_EQ(show(registry.read("HKLM\\A\\v")), "text late");
}

TEST_F(RegistryFiles, WritesEveryType) {
  const struct {
    const char *data, *type, *shown;
  } cases[] = {
      {"text", "REG_SZ", "text text"},
      {"", "", "text "},
      {"%A%", "reg_expand_sz", "expand %A%"},
      {"4294967295", "REG_DWORD", "number 4294967295"},
      {"-1", "Reg_Dword", "number 4294967295"},
      {"1684234849", "REG_BINARY", "binary abcd"},
      {"4294967296", "REG_DWORD", "fails"},
      {"-2147483649", "REG_DWORD", "fails"},
      {"1x", "REG_DWORD", "fails"},
      {" 1", "REG_DWORD", "fails"},
      {"", "REG_BINARY", "fails"},
      {"1", "REG_MULTI_SZ", "fails"},
      {"1", "string", "fails"},
  };
  for (const auto& each : cases) {
    write_file(system, "[K]\n\"v\"=\"old\"\n");
    Registry registry(folder);
    const bool fails = std::string(each.shown) == "fails";
    EXPECT_EQ(registry.write("HKLM\\K\\v", each.data, each.type), !fails) << each.data;
    EXPECT_EQ(show(Registry(folder).read("HKLM\\K\\v")), fails ? "text old" : each.shown);
  }
  EXPECT_TRUE(Registry(folder).write("HKCU\\New\\Key\\", "default", ""));
  EXPECT_EQ(read_file(user), "WINE REGISTRY Version 2\n\n[New\\\\Key]\n@=\"default\"\n");
}

TEST_F(RegistryFiles, Removes) {
  write_file(
      system,
      "[]\n@=\"r\"\n\n[K]\n@=\"d\"\n\"v\"=\"1\"\n\n[K\\\\L]\n\"v\"=\"2\"\n\n[KL]\n\"v\"=\"3\"\n");
  Registry registry(folder);
  for (const char* path : {"HKLM\\K\\w", "HKLM\\M\\", "HKLM\\", "HKLM", "HKCR\\K\\v", "HKCU\\K\\v"})
    EXPECT_FALSE(registry.remove(path)) << path;
  EXPECT_TRUE(registry.remove("HKLM\\k\\V"));
  EXPECT_FALSE(registry.read("HKLM\\K\\v"));
  EXPECT_TRUE(registry.read("HKLM\\K\\"));
  EXPECT_TRUE(registry.remove("HKLM\\K\\"));
  EXPECT_EQ(tree(folder), (Tree{{"system.reg", "[]\n@=\"r\"\n\n[KL]\n\"v\"=\"3\"\n"}}));
}

TEST_F(RegistryFiles, KeepsPermissionsAndLinks) {
  write_file(folder / "real.reg", "[K]\n");
  fs::permissions(folder / "real.reg", fs::perms{0640});
  fs::create_symlink("real.reg", system);
  EXPECT_TRUE(Registry(folder).write("HKLM\\K\\v", "new", ""));
  EXPECT_EQ(tree(folder),
            (Tree{{"real.reg", "[K]\n\"v\"=\"new\"\n"}, {"system.reg", "-> real.reg"}}));
  EXPECT_EQ(fs::status(system).permissions(), fs::perms{0640});
}

TEST_F(RegistryFiles, AFailedWriteChangesNothing) {
  EXPECT_FALSE(Registry(folder / "none").write("HKLM\\K\\v", "1", ""));
  EXPECT_FALSE(fs::exists(folder / "none"));
  fs::create_directory(system);
  fs::create_symlink("nowhere", user);
  for (const char* path : {"HKLM\\K\\v", "HKCU\\K\\v", "HKCR\\K\\v"}) {
    EXPECT_FALSE(Registry(folder).write(path, "1", "")) << path;
    EXPECT_FALSE(Registry(folder).read(path)) << path;
  }
  EXPECT_TRUE(fs::is_directory(system));
  EXPECT_EQ(tree(folder), (Tree{{"user.reg", "-> nowhere"}}));
}

TEST_F(RegistryFiles, AWriteThatBreaksOffLeavesTheOldFile) {
  const std::string old = "[K]\n\"v\"=\"" + std::string(100000, 'x') + "\"\n";
  write_file(system, old);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{50000, before.rlim_max};
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const bool written = Registry(folder).write("HKLM\\K\\w", "new", "");
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  signal(SIGXFSZ, handler);
  EXPECT_FALSE(written);
  EXPECT_EQ(tree(folder), (Tree{{"system.reg", old}}));
}

}  // namespace
