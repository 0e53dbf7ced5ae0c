// The registry's text form, well-formed and malformed, and the two files of a Wine prefix behind
// the shell object's three operations.
#include "platform/prefix/registry.h"

#include "platform/path_rules.h"
#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <string>

namespace fs = std::filesystem;

namespace {

using Type = RegistryValue::Type;

// As Wine writes it.
const std::string sample = R"(WINE REGISTRY Version 2

[Software\\Tools] 1700000000
#time=1da1b2c3d4e5f60
@="the tools"
"Path"="C:\\Tools"
"Size"=dword:0000001f

[Software\\Tools\\Odd \[name\] here] 1700000001
"Long"=hex(3):00,01,02,\
  03,04,\
  05
"quote\"d"="yes"

[Software\\Toolset] 1700000002
"Path"=str(2):"%SystemRoot%\\set"
)";

// The type and the value as one text.
std::string show(const std::optional<RegistryValue>& value) {
  if (!value)
    return "none";
  const char* const types[] = {"text ", "expand ", "number ", "binary ", "other"};
  const std::string number = value->type == Type::number ? std::to_string(value->number) : "";
  return types[static_cast<std::size_t>(value->type)] + value->text + number + value->bytes;
}

std::string crlf(std::string text) {
  for (auto at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2))
    text.insert(at, "\r");
  return text;
}

std::string replaced(std::string text, const std::string& old, const std::string& now) {
  return text.replace(text.find(old), old.size(), now);
}

RegistryValue text_value(const std::string& text) { return {.type = Type::text, .text = text}; }

TEST(RegistryText, FindsValues) {
  const std::string several = "[K]\n\"v\"=\"1\"\n\"V\"=\"2\"\n[L]\n\"v\"=\"x\"\n[k]\n\"v\"=\"3\"\n";
  const struct {
    std::string text, key, name, shown;
  } cases[] = {
      {sample, "Software\\Tools", "", "text the tools"},
      {sample, "software\\TOOLS", "pATH", "text C:\\Tools"},
      {sample, "Software\\Tools", "Size", "number 31"},
      {sample, "Software\\Tools\\Odd [NAME] here", "Long", {"binary \0\1\2\3\4\5", 13}},
      {sample, "Software\\Tools\\Odd [name] here", "quote\"d", "text yes"},
      {sample, "Software\\Toolset", "Path", "expand %SystemRoot%\\set"},
      {sample, "Software\\Tool", "Path", "none"},
      {sample, "Software\\Tools] 1700000000", "Path", "none"},
      {"[K\\xe9y\\\\b\\x41]\n\"\\xc9t\\xe9\"=\"found\"", "K\u00c9Y\\Ba", "\u00e9t\u00c9",
       "text found"},
      {"[\\[\\]]\n@=\"found\"", "[]", "", "text found"},
      {"[K]\n\"\"=\"found\"\n\"@\"=\"other\"", "K", "", "text found"},
      {"[K]\n\"@\"=\"found\"", "K", "@", "text found"},
      {"[K\\x5cz]\n@=\"found\"", "K\\z", "", "text found"},
      {"[]\n@=\"found\"", "", "", "text found"},
      {several + "[K]\n\"v\"=\"cut", "K", "v", "text 3"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(show(find_value(each.text, each.key, each.name)), each.shown) << each.text;
    EXPECT_EQ(show(find_value(crlf(each.text), each.key, each.name)), each.shown) << each.text;
  }
  for (const char* text :
       {"", "[", "[K", "[K\n\"v\"=\"x\"", "[K]", "[K]\n\"v", "[K]\n\"v\"", "[K]\n\"v\"=", "K]\n",
        "\"v\"=\"x\"\n[K]\n", "[K\\]\n\"v\"=\"x\"", "[K]\n\"v\"=dword:1", "[K]\n\"v\"=hex:1,\\\n",
        "[K]\nv=\"x\"\n", "[K]\n;\"v\"=\"x\"\n", "[K]\n\"v\" \"x\"\n"})
    EXPECT_EQ(show(find_value(text, "K", "v")), "none") << text;
}

TEST(RegistryText, ParsesData) {
  const std::pair<const char*, const char*> cases[] = {
      {R"("\1x\018\1018")", "text \1x\0018A8"},
      {R"("\x41\x0041b\x41z\xzz")", "text AAbAzxzz"},
      {R"("\xe9\xe9\x20ac")", "text \u00e9\u00e9\u20ac"},
      {R"("\xd83d-\xde00\xd83d\xd83d\xde00")", "text \uFFFD-\uFFFD\uFFFD\U0001f600"},
      {R"("\.\n")", "text .\n"},
      {"\"caf\u00e9\"", "text caf\u00e9"},
      {R"("cut\0here")", "text cut"},
      {R"(str(7):"one\0two\0")", "other"},
      {"dword:ffffffff", "number 4294967295"},
      {"hex(1):41,00,e9,00,3d,d8,00,de,00,00,42,00", "text A\u00e9\U0001f600"},
      {"hex(2):25,00,00,00", "expand %"},
      {"hex(4):01,02,00,80", "number 2147484161"},
      {"hex(4):01,02", "other"},
      {"hex(ffff):41", "other"},
      {"hex:41,\\\n  42,\\\n43", "binary ABC"},
  };
  const auto parsed = [](const std::string& data) {
    return show(find_value("[K]\n\"v\"=" + data + "\n", "K", "v"));
  };
  for (const auto& [data, shown] : cases)
    EXPECT_EQ(parsed(data), shown) << data;
  const char malformed[] =
      R"x("open|"open\"|"open\|str(2):open|str(2)"a"|str(:"a"|str():dword:1|text|-|dword:|dword:-1)x"
      "|dword:123456789|hex|hex(|hex(3|hex(3)41|hex(zz):41|hex():41|hex:4x|hex:123|hex:41 4|hex:,4";
  for (const auto& data : split_names(malformed, "|"))
    EXPECT_EQ(parsed(data), "none") << data;
}

// A null value deletes the value, a null name the key.
TEST(RegistryText, EditsOnlyWhatIsMeant) {
  const std::string long_value = "\"Long\"=hex(3):00,01,02,\\\n  03,04,\\\n  05\n";
  const std::string tools = sample.substr(0, sample.find("\n[Software\\\\Tools]"));
  const std::string toolset = sample.substr(sample.find("\n[Software\\\\Toolset]"));
  const char* const odd = "software\\tools\\odd [name] here";
  const struct {
    std::string text;
    const char *key, *name, *value;
    std::string expected;
  } cases[] = {
      {sample, "Software\\TOOLS", "PATH", "n",
       replaced(sample, "\"Path\"=\"C:\\\\Tools\"", "\"PATH\"=\"n\"")},
      {sample, "Software\\Tools", "", "n", replaced(sample, "@=\"the tools\"", "@=\"n\"")},
      {sample, odd, "Long", "n", replaced(sample, long_value, "\"Long\"=\"n\"\n")},
      {sample, "Software\\Tools", "M", "n", replaced(sample, "000\n#", "000\n\"M\"=\"n\"\n#")},
      {sample, "New\\Key [1]", "a\"b", "n", sample + "\n[New\\\\Key \\[1\\]]\n\"a\\\"b\"=\"n\"\n"},
      {"", "K", "v", "n", "WINE REGISTRY Version 2\n\n[K]\n\"v\"=\"n\"\n"},
      {"[K]\n\"a\"=\"", "K", "v", "n", "[K]\n\"v\"=\"n\"\n\"a\"=\""},
      {"[K]", "K", "v", "n", "[K]\n\"v\"=\"n\"\n"},
      {"[K]\n\"v\"=\"cut", "K", "v", "n", "[K]\n\"v\"=\"n\"\n"},
      {"[K]\n\"v\"=hex:00,\\\n[L]\n", "K", "v", "n", "[K]\n\"v\"=\"n\"\n[L]\n"},
      {"[K]\n\"v\"=\"a\\\n\"w\"=\"b\"\n", "K", "v", "n", "[K]\n\"v\"=\"n\"\n\"w\"=\"b\"\n"},
      {"[K]\n\n\n\n[L]\n", "K", "v", "n", "[K]\n\"v\"=\"n\"\n\n\n\n[L]\n"},
      {"[K", "K", "v", "n", "[K\n\n[K]\n\"v\"=\"n\"\n"},
      {"[K]\n\"v\"=\"1\"\n[k]\n\"v\"=\"2\"\n", "K", "v", "n",
       "[K]\n\"v\"=\"1\"\n[k]\n\"v\"=\"n\"\n"},
      {"[K]\n\"v\"=\"1\"\n[k]\n\"V\"=\"2\"\n", "K", "v", nullptr, "[K]\n[k]\n"},
      {sample, odd, "long", nullptr, replaced(sample, long_value, "")},
      {sample, "Software\\Tools", "none", nullptr, sample},
      {sample, "Software\\Tool", nullptr, nullptr, sample},
      {sample, "software\\tools", nullptr, nullptr, tools + "\n" + toolset.substr(1)},
      {sample, "Software", nullptr, nullptr, tools + "\n"},
      {"[A]\n[B]\n\n\n[A\\\\C]\n", "A", nullptr, nullptr, "[B]\n\n\n"},
  };
  for (const auto& each : cases) {
    const auto edited = [&](const std::string& text) {
      if (!each.name)
        return without_key(text, each.key);
      return each.value ? with_value(text, each.key, each.name, text_value(each.value))
                        : without_value(text, each.key, each.name);
    };
    EXPECT_EQ(edited(each.text), each.expected) << each.text;
  }
}

TEST(RegistryText, EscapesSoThatWineReadsIt) {
  const std::pair<RegistryValue, const char*> cases[] = {
      {text_value("a\\b\"[c]"), R"("a\\b\"[c]")"},
      {text_value("\u00e9z\u00e9a\U0001f600"), R"("\x00e9z\x00e9a\xd83d\xde00")"},
      {text_value("\1x\0017\n\x7f"), "\"\\001x\\0017\\012\x7f\""},
      {text_value("\377z\351a"), R"("\xfffdz\xfffda")"},
      {{.type = Type::number, .number = 0xBEEF}, "dword:0000beef"},
      {{.type = Type::binary, .bytes = "\1\xFF"}, "hex:01,ff"},
  };
  for (const auto& [value, line] : cases)
    EXPECT_EQ(with_value("[K]\n", "K", "v", value), std::string("[K]\n\"v\"=") + line + "\n");

  std::string all = "\u00e9g\u20ac\U0010ffff";
  for (char c = 1; c < 0x7f; ++c)
    all += std::string{c, '7', c, 'f', c};
  const auto text = with_value("", "Key \\[\u00e9]a", all, text_value(all));
  EXPECT_EQ(show(find_value(text, "Key \\[\u00e9]a", all)), "text " + all);
}

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
  const std::pair<const char*, const char*> cases[] = {
      {"hkey_LOCAL_machine\\a\\b\\V", "text machine"},
      {"hkcu\\A\\B\\v", "text user"},
      {"HKEY_CURRENT_USER\\A\\B\\v", "text user"},
      {"HKLM\\A\\B\\", "text key"},
      {"HKLM\\v", "text root"},
      {"HKLM\\A\\B", "none"},
      {"HKEY_CLASSES_ROOT\\A\\B\\v", "none"},
      {"HKLM\\A\\\\B\\v", "none"},
      {"", "none"},
  };
  for (const auto& [path, shown] : cases)
    EXPECT_EQ(show(registry.read(path)), shown) << path;
}

TEST_F(RegistryFiles, WritesEveryType) {
  const struct {
    const char *data, *type, *shown;
  } cases[] = {
      {"text", "REG_SZ", "text text"},
      {"%A%", "reg_expand_sz", "expand %A%"},
      {"4294967295", "REG_DWORD", "number 4294967295"},
      {"-1", "Reg_Dword", "number 4294967295"},
      {"1684234849", "REG_BINARY", "binary abcd"},
      {"4294967296", "REG_DWORD", "text old"},
      {"-2147483649", "REG_DWORD", "text old"},
      {"1x", "REG_DWORD", "text old"},
      {"1", "REG_MULTI_SZ", "text old"},
  };
  for (const auto& each : cases) {
    write_file(system, "[K]\n\"v\"=\"old\"\n");
    const bool fails = std::string(each.shown) == "text old";
    EXPECT_EQ(Registry(folder).write("HKLM\\K\\v", each.data, each.type), !fails) << each.data;
    EXPECT_EQ(show(Registry(folder).read("HKLM\\K\\v")), each.shown);
  }
  EXPECT_TRUE(Registry(folder).write("HKCU\\New\\Key\\", "default", ""));
  EXPECT_EQ(read_file(user), "WINE REGISTRY Version 2\n\n[New\\\\Key]\n@=\"default\"\n");
}

TEST_F(RegistryFiles, AreReadOnceUntilTheyAreChanged) {
  Registry registry(folder);
  EXPECT_FALSE(registry.read("HKLM\\K\\v"));
  EXPECT_EQ(tree(folder), Tree());
  write_file(system, "[]\n@=\"r\"\n\n[K]\n@=\"d\"\n\"v\"=\"1\"\n\n[K\\\\L]\n\"v\"=\"2\"\n");
  EXPECT_FALSE(registry.read("HKLM\\K\\v"));
  for (const char* path : {"HKLM\\K\\w", "HKLM\\M\\", "HKLM\\", "HKLM", "HKCR\\K\\v", "HKCU\\K\\v"})
    EXPECT_FALSE(registry.remove(path)) << path;
  EXPECT_TRUE(registry.write("HKLM\\K\\w", "new", "REG_SZ"));
  EXPECT_EQ(show(registry.read("HKLM\\K\\v")), "text 1");
  EXPECT_TRUE(registry.remove("HKLM\\k\\V"));
  EXPECT_FALSE(registry.read("HKLM\\K\\v"));
  EXPECT_TRUE(registry.read("HKLM\\K\\"));
  EXPECT_TRUE(registry.remove("HKLM\\K\\"));
  EXPECT_EQ(tree(folder), (Tree{{"system.reg", "[]\n@=\"r\"\n\n"}}));
}

TEST_F(RegistryFiles, KeepsPermissionsAndSymlinksAndNoTemporaryFiles) {
  write_file(folder / "real.reg", "[K]\n");
  write_file(folder / ".vora-map-updater-1.tmp", "stale");
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

}  // namespace
