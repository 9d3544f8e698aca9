#include "app/settings.h"

#include "app/symbols.h"
#include "support.h"

namespace {

TEST(Settings, LanguageOfLocale) {
  const struct {
    const char *locale, *language;
  } cases[] = {
      {"de_DE.UTF-8", "de-DE"}, {"de_DE@euro", "de-DE"}, {"pt_BR", "pt-BR"},     {"de", "de"},
      {"en-GB", "en-GB"},       {"fil_PH", "fil-PH"},    {"C", "en-US"},         {"POSIX", "en-US"},
      {"C.UTF-8", "en-US"},     {"", "en-US"},           {"../../etc", "en-US"}, {"de_", "en-US"},
      {"de_../x", "en-US"},     {"d\xc3\xa9", "en-US"},  {"de_D/E", "en-US"},
  };
  for (const auto& c : cases) EXPECT_EQ(host::LanguageOfLocale(c.locale), c.language) << c.locale;
}

TEST(Settings, EnvironmentDecidesInOrder) {
  Environment lang("LANG", "de_DE"), messages("LC_MESSAGES", "fr_FR"), all("LC_ALL", "");
  EXPECT_EQ(host::FindLanguage(), "fr-FR");
  Environment overriding("LC_ALL", "C");
  EXPECT_EQ(host::FindLanguage(), "en-US");

  Environment home("QLX_HOME", "/q"), data("XDG_DATA_HOME", "/x"), user("HOME", "/h");
  EXPECT_EQ(host::FindHome(), "/q");
  Environment noHome("QLX_HOME", nullptr);
  EXPECT_EQ(host::FindHome(), "/x/qlx");
  Environment relative("XDG_DATA_HOME", "x");
  EXPECT_EQ(host::FindHome(), "/h/.local/share/qlx");
  Environment nobody("HOME", nullptr);
  EXPECT_EQ(host::FindHome(), "");
}

TEST(Symbols, OrderAndFaults) {
  TempFolder folder;
  folder.Write("b.toml", "Z = 1\nA = -5\nSAME = 3\nOTHER = 4\n");
  folder.Write("a.toml", "SAME = 3\nOTHER = 9\n");
  folder.Write("c.toml", "BIG = 2147483648\nTEXT = \"1\"\nLAST = 2147483647\n");
  folder.Write("d.toml", "X = 1\nX = 2\n");
  folder.Write("e.txt", "NOT = 1\n");
  const host::SymbolTable table = host::ReadSymbols(folder.Path());
  std::string symbols;
  for (const host::Symbol& symbol : table.symbols)
    symbols += symbol.name + "=" + std::to_string(symbol.value) + " ";
  EXPECT_EQ(symbols, "SAME=3 OTHER=9 Z=1 A=-5 LAST=2147483647 ");
  const std::string prefix = folder.Path().string() + "/";
  ASSERT_EQ(table.faults.size(), 4u);
  EXPECT_EQ(table.faults[0],
            prefix + "b.toml, line 4: the constant 'OTHER' has another value in " + prefix + "a.toml, line 2");
  EXPECT_EQ(table.faults[1], prefix + "c.toml, line 1: the constant 'BIG' is no 32-bit integer");
  EXPECT_EQ(table.faults[2], prefix + "c.toml, line 2: the constant 'TEXT' is no 32-bit integer");
  EXPECT_TRUE(table.faults[3].starts_with(prefix + "d.toml, line 2: ")) << table.faults[3];
  EXPECT_EQ(host::ReadSymbols(folder.Path() / "none").faults.size(), 1u);
}

TEST(Symbols, ShippedTableIsUpToDateOnceItIsRead) {
  host::GetSettings().startup = HOST_STARTUP;
  const int32_t count = host::general::GetSymbolCount();
  ASSERT_GT(count, 6);
  EXPECT_EQ(host::general::SymbolsUpToDate(), 0);
  std::string names = " ";
  for (int32_t i = 0; i < count; ++i) {
    EXPECT_EQ(host::general::SymbolsUpToDate(), 0);
    names += std::string(host::general::GetSymbolName(i)) + "=" +
             std::to_string(host::general::GetSymbolValue(i)) + " ";
  }
  EXPECT_EQ(host::general::SymbolsUpToDate(), 1);
  for (const char* symbol : {" true=1 ", " NULL=0 ", " PLUGIN_KIND_MESSAGE=17 ", " FREEMEMBER=1026885 "})
    EXPECT_NE(names.find(symbol), names.npos) << symbol;
  EXPECT_EQ(host::general::GetSymbolName(-1), nullptr);
  EXPECT_EQ(host::general::GetSymbolName(count), nullptr);
  EXPECT_EQ(host::general::GetSymbolValue(count), 0);
}

}  // namespace
