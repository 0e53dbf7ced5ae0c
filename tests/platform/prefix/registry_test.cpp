// The registry's text form, well-formed and malformed, and the two files of a Wine prefix behind
// the shell object's three operations.
#include "platform/prefix/registry.h"

#include "platform/path_rules.h"
#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <string>

namespace fs = std::filesystem;

namespace {

// As Wine writes it.
const std::string sample = R"(WINE REGISTRY Version 2

[Software\\Tools] 1700000000
#time=1da1b2c3d4e5f60
@="the tools"
"Path"="C:\\Tools"
"Size"=dword:0000001f

[Software\\Tools\\Odd \[name\] here] 1700000001
"Long"=hex(1):41,00,e9,00,3d,d8,\
  00,de,00,00,\
  42,00
"quote\"d"="yes"

[Software\\Toolset] 1700000002
"Path"=str(2):"%SystemRoot%\\set"
)";

std::string show(const std::optional<RegistryValue>& value) {
  const bool expands = value && value->type == RegistryValue::Type::expandable_text;
  return value ? (expands ? "expand " : "") + value->text : "none";
}

std::string replaced(std::string text, const std::string& old, const std::string& now) {
  return text.replace(text.find(old), old.size(), now);
}

TEST(RegistryText, FindsValues) {
  const std::string several =
      "\n[K]\n\"v\"=\"1\"\n\"V\"=\"2\"\n[L]\n\"v\"=\"x\"\n[k]\n\"v\"=\"3\"\n";
  const struct {
    std::string text, key, name, shown;
  } cases[] = {
      {sample, "Software\\Tools", "", "the tools"},
      {sample, "software\\TOOLS", "pATH", "C:\\Tools"},
      {sample, "Software\\Tools", "Size", "31"},
      {sample, "Software\\Tools\\Odd [NAME] here", "Long", "A\u00e9\U0001f600"},
      {sample, "Software\\Tools\\Odd [name] here", "quote\"d", "yes"},
      {sample, "Software\\Toolset", "Path", "expand %SystemRoot%\\set"},
      {sample, "Software\\Tool", "Path", "none"},
      {sample, "Software\\Tools] 1700000000", "Path", "none"},
      {"\n[K\\x00e9A\\\\b]\n\"\\xe9t\\xe9\"=\"found\"", "k\u00e9a\\B", "\u00e9T\u00e9", "found"},
      {"\n[K]\n\"\"=\"other\"\n@=\"found\"\n\"@\"=\"other\"", "K", "", "found"},
      {"\n[K]\n\"@\"=\"found\"", "K", "@", "found"},
      {"\n[]\n@=\"found\"\r\n", "", "", "found"},
      {several + "[K]\n\"v\"=\"cut", "K", "v", "3"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(show(find_value(each.text, each.key, each.name)), each.shown) << each.text;
  for (const char* text :
       {"", "\n[", "\n[K", "\n[K\n\"v\"=\"x\"", "\n[K]", "\n[K]\n\"v", "\n[K]\n\"v\"",
        "\n[K]\n\"v\"=", "\nK]\n", "\n\"v\"=\"x\"\n[K]\n", "\n[K\\]\n\"v\"=\"x\"",
        "\n[K]\nv=\"x\"\n", "\n[K]\n;\"v\"=\"x\"\n", "\n[K]\n\"v\" \"x\"\n"})
    EXPECT_EQ(show(find_value(text, "K", "v")), "none") << text;
}

TEST(RegistryText, ParsesData) {
  const std::pair<const char*, const char*> cases[] = {
      {R"("\1x\018\1018")", "\1x\0018A8"},
      {R"("\x41\x0041b\x41z\xzz")", "AAbAzxzz"},
      {R"("\xe9\xe9\x20ac")", "\u00e9\u00e9\u20ac"},
      {R"("\xd83d-\xde00\xd83d\xde00")", "\uFFFD-\uFFFD"},
      {R"("\xd83d-\xd83d\xde00")", "\uFFFD-\U0001f600"},
      {R"("\.\n")", ".\n"},
      {"\"caf\u00e9\"", "caf\u00e9"},
      {R"("cut\0here")", "cut"},
      {"dword:ffffffff", "4294967295"},
      {"hex(2):25,00,00,00", "expand %"},
      {"hex(1):41,00,3d,d8,00,00", "\uFFFD"},
      {"hex(1):41,00,00,00,00,d8", "A"},
      {"hex(1):41,00,4", "A\4"},
  };
  const auto parsed = [](const std::string& data) {
    return show(find_value("\n[K]\n\"v\"=" + data + "\n", "K", "v"));
  };
  for (const auto& [data, shown] : cases)
    EXPECT_EQ(parsed(data), shown) << data;
  const char malformed[] =
      R"x("open|"open\"|"open\|str(2):open|str(2)"a"|str(:"a"|str(7):"one\0"|text|-|dword:)x"
      "|dword:-1|hex:41|hex(4):01,00,00,00|hex(ffff):41|hex|hex(|hex(2|hex(2)41|hex():41";
  for (const auto& data : split_names(malformed, "|"))
    EXPECT_EQ(parsed(data), "none") << data;
}

// A null value deletes the value or, without a name, the key.
TEST(RegistryText, EditsOnlyWhatIsMeant) {
  const std::string long_value =
      "\"Long\"=hex(1):41,00,e9,00,3d,d8,\\\n  00,de,00,00,\\\n  42,00\n";
  const std::string tools = sample.substr(0, sample.find("[Software\\\\Tools]"));
  const std::string toolset = sample.substr(sample.find("[Software\\\\Toolset]"));
  const char* const odd = "software\\tools\\odd [name] here";
  const struct {
    std::string text;
    const char *key, *name, *value;
    std::string expected;
  } cases[] = {
      {sample, "Software\\TOOLS", "PATH", "n",
       replaced(replaced(sample, "\"Path\"=\"C:\\\\Tools\"\n", ""), "00\n",
                "00\n\"PATH\"=\"n\"\n")},
      {sample, "Software\\Tools", "", "n",
       replaced(replaced(sample, "@=\"the tools\"\n", ""), "00\n", "00\n@=\"n\"\n")},
      {sample, odd, "Long", "n", replaced(sample, long_value, "\"Long\"=\"n\"\n")},
      {sample, "New\\Key [1]", "a\"b", "n", sample + "\n[New\\\\Key \\[1\\]]\n\"a\\\"b\"=\"n\"\n"},
      {"", "K", "v", "n", "WINE REGISTRY Version 2\n\n[K]\n\"v\"=\"n\"\n"},
      {"\n[K]\n\"a\"=\"", "K", "v", "n", "\n[K]\n\"v\"=\"n\"\n\"a\"=\"\n"},
      {"\n[K]", "K", "v", "n", "\n[K]\n\"v\"=\"n\"\n"},
      {"\n[K]\n\"v\"=\"cut", "K", "v", "n", "\n[K]\n\"v\"=\"n\"\n"},
      {"\n[K]\n\"v\"=hex:00,\\\n[L]\n", "K", "v", "n", "\n[K]\n\"v\"=\"n\"\n[L]\n"},
      {"\n[K]\n\n\n\n[L]\n", "K", "v", "n", "\n[K]\n\"v\"=\"n\"\n\n\n\n[L]\n"},
      {"\n[K", "K", "v", "n", "\n[K\n\n[K]\n\"v\"=\"n\"\n"},
      {"\n[K]\n\"v\"=\"1\"\n[k]\n\"V\"=\"2\"\n", "K", "v", nullptr, "\n[K]\n[k]\n"},
      {sample, odd, "long", nullptr, replaced(sample, long_value, "")},
      {sample, "Software\\Tools", "none", nullptr, ""},
      {sample, "Software\\Tool", "", nullptr, ""},
      {sample, "software\\tools", "", nullptr, tools + toolset},
      {sample, "Software", "", nullptr, tools},
      {"\n[A]\n[B]\n\n\n[A\\\\C]\n", "A", "", nullptr, "\n[B]\n\n\n"},
  };
  for (const auto& each : cases) {
    const auto edited = each.value ? with_value(each.text, each.key, each.name, each.value, "")
                                   : without(each.text, each.key, each.name);
    EXPECT_EQ(edited.value_or(""), each.expected) << each.text;
  }
}

TEST(RegistryText, EscapesSoThatWineReadsIt) {
  const struct {
    const char *data, *type, *line;
  } cases[] = {
      {"a\\b\"[c]", "REG_SZ", R"("a\\b\"[c]")"},
      {"\u00e9z\u00e9a\U0001f600", "", R"("\xe9z\x00e9a\xd83d\xde00")"},
      {"\1x\0017\n\x7f", "", "\"\\x1x\\x00017\\xa\x7f\""},
      {"\377z\351a", "", R"("\xfffdz\xfffda")"},
      {"%A%", "reg_expand_sz", R"(str(2):"%A%")"},
      {"48879", "REG_DWORD", "dword:0000beef"},
      {"-1", "Reg_Dword", "dword:ffffffff"},
      {"4294967295", "REG_DWORD", "dword:ffffffff"},
      {"1684234849", "REG_BINARY", "hex:61,62,63,64"},
      {"4294967296", "REG_DWORD", nullptr},
      {"-2147483649", "REG_DWORD", nullptr},
      {"1x", "REG_DWORD", nullptr},
      {"1", "REG_MULTI_SZ", nullptr},
  };
  for (const auto& [data, type, line] : cases)
    EXPECT_EQ(with_value("\n[K]\n", "K", "v", data, type).value_or("none"),
              line ? std::string("\n[K]\n\"v\"=") + line + "\n" : "none");

  std::string all = "\u00e9g\u20ac\U0010ffff";
  for (char c = 1; c < 0x7f; ++c)
    all += std::string{c, '7', c, 'f', c};
  const auto text = with_value("", "Key \\[\u00e9]a", all, all, "").value();
  EXPECT_EQ(show(find_value(text, "Key \\[\u00e9]a", all)), all);
}

class RegistryFiles : public testing::Test {
protected:
  RegistryFiles() { fs::create_directory(folder); }

  TestMachine machine;
  const fs::path folder = machine.prefix / "registry";
  const fs::path system = folder / "system.reg", user = folder / "user.reg";
};

TEST_F(RegistryFiles, RootsChooseTheFile) {
  write_file(system, "\n[A\\\\B]\n@=\"key\"\n\"v\"=\"machine\"\n\n[]\n\"v\"=\"root\"\n"
                     "[S\\\\ControlSet001\\\\K]\n\"v\"=\"first\"\n\"w\"=\"first\"\n"
                     "[S\\\\CurrentControlSet\\\\K]\n\"w\"=\"current\"\n");
  write_file(user, "\n[A\\\\B]\n\"v\"=\"user\"\n");
  Registry registry(folder);
  const std::pair<const char*, const char*> cases[] = {
      {"hkey_LOCAL_machine\\a\\b\\V", "machine"},
      {"hkcu\\A\\B\\v", "user"},
      {"HKEY_CURRENT_USER\\A\\B\\v", "user"},
      {"HKLM\\A\\B\\", "key"},
      {"HKLM\\v", "root"},
      {"HKLM\\S\\CurrentControlSet\\K\\v", "first"},
      {"HKLM\\S\\CurrentControlSet\\K\\w", "current"},
      {"HKLM\\A\\B", "none"},
      {"HKEY_CLASSES_ROOT\\A\\B\\v", "none"},
      {"HKLM\\A\\\\B\\v", "none"},
      {"", "none"},
  };
  for (const auto& [path, shown] : cases)
    EXPECT_EQ(show(registry.read(path)), shown) << path;
}

TEST_F(RegistryFiles, AreReadOnceUntilTheyAreChanged) {
  Registry registry(folder);
  EXPECT_FALSE(registry.read("HKLM\\K\\v"));
  EXPECT_EQ(tree(folder), Tree());
  write_file(system, "\n[]\n@=\"r\"\n\n[K]\n@=\"d\"\n\"v\"=\"1\"\n\n[K\\\\L]\n\"v\"=\"2\"\n");
  EXPECT_FALSE(registry.read("HKLM\\K\\v"));
  for (const char* path : {"HKLM\\K\\w", "HKLM\\M\\", "HKLM\\", "HKLM", "HKCR\\K\\v", "HKCU\\K\\v"})
    EXPECT_FALSE(registry.remove(path)) << path;
  EXPECT_TRUE(registry.write("HKLM\\K\\w", "new", "REG_SZ"));
  EXPECT_EQ(show(registry.read("HKLM\\K\\v")), "1");
  EXPECT_TRUE(registry.remove("HKLM\\k\\V"));
  EXPECT_FALSE(registry.read("HKLM\\K\\v"));
  EXPECT_TRUE(registry.read("HKLM\\K\\"));
  EXPECT_TRUE(registry.remove("HKLM\\K\\"));
  EXPECT_EQ(tree(folder), (Tree{{"system.reg", "\n[]\n@=\"r\"\n\n"}}));
}

TEST_F(RegistryFiles, KeepsPermissionsAndSymlinks) {
  write_file(folder / "real.reg", "\n[K]\n");
  fs::permissions(folder / "real.reg", fs::perms{0640});
  fs::create_symlink("real.reg", system);
  EXPECT_TRUE(Registry(folder).write("HKLM\\K\\v", "new", ""));
  EXPECT_EQ(tree(folder),
            (Tree{{"real.reg", "\n[K]\n\"v\"=\"new\"\n"}, {"system.reg", "-> real.reg"}}));
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
