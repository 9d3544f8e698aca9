#include "files/files.h"

#include <sys/stat.h>

#include "support.h"

namespace {

namespace fs = std::filesystem;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

TEST(BrowseFiles, SortsByBytesAndTellsKinds) {
  TempFolder folder;
  for (const char* name : {"b", "B", ".hidden", "\xc3\xa4", "a.pyp", "sub/inner"}) folder.Write(name);
  Path path(PathWord(folder.Path()));
  BrowseFiles* browser = host::browsefiles::Create();
  ASSERT_EQ(Take(host::browsefiles::Start(browser, &path)), HOST_RESULT_OK);
  EXPECT_EQ(Text(host::browsefiles::GetName(browser)).Text(), "");
  std::string seen;
  // What goes away after the start is still listed.
  fs::remove(folder.Path() / "b");
  while (host::browsefiles::Next(browser)) {
    seen += Text(host::browsefiles::GetName(browser)).Text();
    seen += host::browsefiles::IsFolder(browser) ? "/" : "";
    seen += host::browsefiles::IsHidden(browser) ? "? " : " ";
  }
  EXPECT_EQ(seen, ".hidden? B a.pyp b sub/ \xc3\xa4 ");
  EXPECT_EQ(host::browsefiles::Next(browser), 0);

  Path missing(PathWord(folder.Path() / "none"));
  std::string error;
  EXPECT_EQ(Take(host::browsefiles::Start(browser, &missing), &error), HOST_RESULT_NOT_FOUND);
  EXPECT_EQ(error, "can't read the folder '" + missing.Text() + "': No such file or directory");
  EXPECT_EQ(host::browsefiles::Next(browser), 0);
  host::browsefiles::Free(browser);
}

TEST(Folders, OperationsTellPathAndReason) {
  TempFolder folder;
  folder.Write("file", "1");
  folder.Write("other", "2");
  folder.Write("full/a/b");
  fs::create_symlink("nowhere", folder.Path() / "dangling");
  fs::create_directory_symlink(folder.Path() / "full", folder.Path() / "link");
  const auto create = [](const HostFilename* a, const HostFilename*) { return host::general::CreateFolder(a); };
  const auto remove = [](const HostFilename* a, const HostFilename*) { return host::general::DeletePath(a); };
  const auto rename = &host::general::RenameFile;
  const struct {
    HostResult (*run)(const HostFilename*, const HostFilename*);
    const char *first, *second, *error;
  } cases[] = {
      {create, "new/deep/er", "", ""},
      {create, "new", "", ""},
      {create, "file", "", "Not a directory"},
      {create, "file/below", "", "Not a directory"},
      {rename, "file", "other", "File exists"},
      {rename, "file", "dangling", "File exists"},
      {rename, "full", "new", "File exists"},
      {rename, "none", "moved", "No such file or directory"},
      {rename, "file", "none/moved", "No such file or directory"},
      {rename, "full", "full/inside", "Invalid argument"},
      {rename, "other", "new/moved", ""},
      {remove, "none", "", "No such file or directory"},
      {remove, "dangling", "", ""},
      {remove, "link", "", ""},
      {remove, "new", "", ""},
  };
  for (const auto& c : cases) {
    Path first(PathWord(folder.Path() / c.first)), second(PathWord(folder.Path() / c.second));
    std::string text;
    Take(c.run(&first, &second), &text);
    if (!*c.error) {
      EXPECT_EQ(text, "") << c.first;
      continue;
    }
    EXPECT_NE(text.find("'" + first.Text() + "'"), text.npos) << text;
    EXPECT_TRUE(text.ends_with(std::string(": ") + c.error)) << text;
  }
  EXPECT_TRUE(fs::exists(folder.Path() / "full/a/b")) << "deleting a link left its target";
  EXPECT_FALSE(fs::exists(folder.Path() / "new"));
  Path file(PathWord(folder.Path() / "file")), full(PathWord(folder.Path() / "full"));
  EXPECT_TRUE(host::general::HostFileExists(&file, 0) && !host::general::HostFileExists(&file, 1));
  EXPECT_TRUE(host::general::HostFileExists(&full, 1) && !host::general::HostFileExists(&full, 0));
}

TEST(Folders, MoveToAnotherDevice) {
  TempFolder here;
  struct stat temp {
  }, memory{};
  if (stat("/dev/shm", &memory) || stat(here.Path().c_str(), &temp) || temp.st_dev == memory.st_dev)
    GTEST_SKIP() << "no second device";
  TempFolder there("/dev/shm");
  here.Write("tree/a/b", "content");
  EXPECT_FALSE(host::Rename(here.Path() / "tree", there.Path() / "tree"));
  EXPECT_FALSE(fs::exists(here.Path() / "tree"));
  EXPECT_EQ(fs::file_size(there.Path() / "tree/a/b"), 7u);
  here.Write("tree/a");
  EXPECT_EQ(host::Rename(here.Path() / "tree", there.Path() / "tree"), std::errc::file_exists);
}

TEST(BaseFile, ReadsToTheEndAndRefusesFolders) {
  TempFolder folder;
  Path file(PathWord(folder.Write("f", "0123456789"))), inside(PathWord(folder.Path()));
  BaseFile* stream = nullptr;
  ASSERT_EQ(Take(host::basefile::OpenForReading(&file, &stream)), HOST_RESULT_OK);
  char buffer[16] = {};
  EXPECT_EQ(host::basefile::GetLength(stream), 10);
  EXPECT_EQ(host::basefile::ReadBytes(stream, buffer, -1), -1);
  EXPECT_EQ(host::basefile::ReadBytes(stream, buffer, 4), 4);
  EXPECT_EQ(host::basefile::ReadBytes(stream, buffer + 4, 12), 6);
  EXPECT_EQ(host::basefile::ReadBytes(stream, buffer, 1), 0);
  EXPECT_STREQ(buffer, "0123456789");
  host::basefile::Close(stream);

  std::string error;
  EXPECT_EQ(Take(host::basefile::OpenForReading(&inside, &stream), &error), HOST_RESULT_ERROR);
  EXPECT_EQ(error, "'" + inside.Text() + "' is a directory");
  EXPECT_EQ(stream, nullptr);
}

TEST(Resource, LanguagesFallBackAndFaultsAreTold) {
  const char* english = "1000 = \"one\"\n1001 = \"two\"\n";
  const struct {
    const char *what, *english, *german, *texts, *warning;  // texts: null when refused
  } cases[] = {
      {"translated in part", english, "1001 = \"zwei\"\n", "one zwei ", ""},
      {"not translated", english, nullptr, "one two ", ""},
      {"no English", nullptr, "1000 = \"eins\"\n", nullptr, "en-US.toml"},
      {"broken", "1000 = \"one\"\n1001 = \n", nullptr, nullptr, "en-US.toml, line 2: "},
      {"broken translation", english, "\nx y", nullptr, "de-DE.toml, line 2: "},
      {"no id", "one = \"1\"\n", nullptr, nullptr, "line 1: 'one' is no id"},
      {"id too large", "99999999999 = \"1\"\n", nullptr, nullptr, "is no id"},
      {"no text", "5 = 1\n", nullptr, nullptr, "line 1: 5 is no text"},
      {"a table", "[5]\nx = 1\n", nullptr, nullptr, "neither an integer nor a text"},
  };
  Environment language("LC_ALL", "de_DE.UTF-8");
  for (const auto& c : cases) {
    TempFolder folder;
    if (c.english) folder.Write("strings/en-US.toml", c.english);
    if (c.german) folder.Write("strings/de-DE.toml", c.german);
    Path path(PathWord(folder.Path()));
    CaptureStderr();
    GeResource* resource = host::resource::Open(&path);
    const std::string warning = GetCapturedStderr();
    EXPECT_EQ(resource != nullptr, c.texts != nullptr) << c.what;
    EXPECT_NE(warning.find(c.warning), warning.npos) << warning;
    EXPECT_EQ(std::count(warning.begin(), warning.end(), '\n'), *c.warning ? 1 : 0) << warning;
    if (!resource) continue;
    std::string texts;
    for (const int32_t id : {1000, 1001, 1002})
      if (Text text(host::resource::LoadText(resource, id)); !text.Text().empty()) texts += text.Text() + " ";
    EXPECT_EQ(texts, c.texts) << c.what;
    host::resource::Close(resource);
  }
}

int asked;

TEST(Resource, SymbolHookIsAskedOncePerName) {
  auto& cache = host::boundary_tables::string.symbolCache;
  EXPECT_FALSE(host::IsKnownSymbol("KNOWN"));
  host::resource::SetSymbolHook([](const HostString* name) {
    ++asked;
    return host::View(name) == "KNOWN" ? int32_t(HOST_SYMBOL_KNOWN) : -1;
  });
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(host::IsKnownSymbol("KNOWN"));
    EXPECT_FALSE(host::IsKnownSymbol("OTHER"));
    EXPECT_EQ(asked, 2);
  }
  cache = nullptr;
  EXPECT_TRUE(host::IsKnownSymbol("KNOWN"));
  EXPECT_EQ(asked, 3);
  host::resource::SetSymbolHook(nullptr);
  EXPECT_FALSE(host::IsKnownSymbol("KNOWN"));
}

}  // namespace
