#include "support.h"

namespace {

TEST(HostString, IllFormedBytesAreReplacedByLongestParts) {
  const std::string mark = "\xef\xbf\xbd";
  const struct {
    const char* what;
    std::string bytes, text;
  } cases[] = {
      {"plain", "abc", "abc"},
      {"zero byte inside", {"a\0b", 3}, {"a\0b", 3}},
      {"every length", "\u00e4\u20ac\U0001f600", "\u00e4\u20ac\U0001f600"},
      {"first and last of each length",
       "\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf",
       "\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf"},
      {"lone continuation", "a\x80z", "a" + mark + "z"},
      {"cut at the end", "a\xe2\x82", "a" + mark},
      {"cut by a letter", "\xf0\x9f\x98x", mark + "x"},
      {"overlong two", "\xc0\xaf", mark + mark},
      {"overlong three", "\xe0\x80\xaf", mark + mark + mark},
      {"surrogate", "\xed\xa0\x80", mark + mark + mark},
      {"above the last", "\xf4\x90\x80\x80", mark + mark + mark + mark},
      {"never a lead", "\xff\xf5", mark + mark},
      {"goes on behind", "\xe2\x82\xe2\x82\xac", mark + "\u20ac"},
  };
  for (const auto& c : cases) {
    Text text(host::string::FromUtf8(c.bytes.data(), int64_t(c.bytes.size())));
    EXPECT_EQ(text.Text(), c.text) << c.what;
  }
  EXPECT_EQ(host::string::FromUtf8(nullptr, 3).word, nullptr);
  EXPECT_EQ(host::string::FromUtf8("abc", -1).word, nullptr);
}

TEST(HostString, DecodeNamesLineAndByte) {
  const struct {
    std::string bytes, text, error;
  } cases[] = {
      {"", "", ""},
      {"\xef\xbb\xbf"
       "a\n",
       "a\n", ""},
      {"a\xef\xbb\xbf", "a\xef\xbb\xbf", ""},
      {"one\ntwo\n\xe4hre\n", "", "line 3: byte 0xe4 is not UTF-8"},
      {"\xef\xbb\xbf\x80", "", "line 1: byte 0x80 is not UTF-8"},
      {"end\xc3", "", "line 1: byte 0xc3 is not UTF-8"},
  };
  for (const auto& c : cases) {
    Text text;
    std::string error;
    const int32_t code = Take(host::string::Decode(c.bytes.data(), int64_t(c.bytes.size()), &text), &error);
    EXPECT_EQ(code, c.error.empty() ? HOST_RESULT_OK : HOST_RESULT_ERROR) << c.bytes;
    EXPECT_EQ(error, c.error);
    EXPECT_EQ(text.Text(), c.text);
  }
}

TEST(HostResult, TellsWhereItWasMade) {
  HostResult result = host::string::Decode(nullptr, -1, nullptr);
  EXPECT_TRUE(std::string_view(result.file).ends_with("host/source/tables/string.cpp")) << result.file;
  EXPECT_GT(result.line, 0);
  EXPECT_EQ(Take(result), HOST_RESULT_ILLEGAL_ARGUMENT);
  result = host::general::DeletePath(nullptr);
  EXPECT_TRUE(std::string_view(result.file).ends_with("host/source/tables/general.cpp")) << result.file;
  EXPECT_EQ(Take(result), HOST_RESULT_NOT_FOUND);
}

TEST(HostString, CopiesShareAndOutliveTheOriginal) {
  HostString original = Word("shared");
  Text copy(host::string::Copy(&original));
  EXPECT_EQ(host::View(&original).data(), host::View(&copy).data());
  host::string::Destroy(&original);
  EXPECT_EQ(original.word, nullptr);
  int64_t size = -1;
  EXPECT_STREQ(host::string::GetUtf8(&copy, &size), "shared");
  EXPECT_EQ(size, 6);
  EXPECT_STREQ(host::string::GetUtf8(&original, &size), "");
  EXPECT_EQ(size, 0);
}

TEST(HostFilename, PathsAreTakenApart) {
  const struct {
    std::string text, path, directory, file;
  } cases[] = {
      {"", "", "", ""},          {"a", "a", "", "a"},
      {"/", "/", "/", ""},       {"///", "/", "/", ""},
      {"/a", "/a", "/", "a"},    {"/a/b", "/a/b", "/a", "b"},
      {"a/b/", "a/b", "a", "b"}, {"a//b", "a//b", "a", "b"},
      {{"a\0b", 3}, "", "", ""}, {"/\xff/\xfe", "/\xff/\xfe", "/\xff", "\xfe"},
  };
  for (const auto& c : cases) {
    Text text(Word(c.text));
    Path path(host::filename::FromString(&text));
    Path directory(host::filename::GetDirectory(&path));
    Text file(host::filename::GetFileString(&path));
    EXPECT_EQ(path.Text(), c.path);
    EXPECT_EQ(directory.Text(), c.directory) << c.text;
    EXPECT_EQ(file.Text(), c.file) << c.text;
    EXPECT_EQ(host::filename::Content(&path), !c.path.empty());
  }
}

TEST(HostFilename, AppendTakesOneComponent) {
  const struct {
    std::string path, name, joined;  // empty: refused
  } cases[] = {
      {"/a", "b", "/a/b"}, {"/", "b", "/b"}, {"", "b", "b"},         {"a", "..b", "a/..b"},
      {"/a", "", ""},      {"/a", ".", ""},  {"/a", "..", ""},       {"/a", "b/c", ""},
      {"/a", "/", ""},     {"/a", "b/", ""}, {"/a", {"b\0", 2}, ""},
  };
  for (const auto& c : cases) {
    Path path(host::MakeFilename(c.path));
    Text name(Word(c.name));
    const int32_t code = Take(host::filename::Append(&path, &name));
    EXPECT_EQ(code, c.joined.empty() ? HOST_RESULT_ILLEGAL_ARGUMENT : HOST_RESULT_OK) << c.name;
    EXPECT_EQ(path.Text(), c.joined.empty() ? c.path : c.joined);
  }
}

TEST(HostFilename, CopyFromTakesItself) {
  Path path(PathWord("/a"));
  EXPECT_EQ(host::filename::CopyFrom(&path, &path), 1);
  EXPECT_EQ(path.Text(), "/a");
  Path other(PathWord("/b"));
  EXPECT_EQ(host::filename::CopyFrom(&path, &other), 1);
  EXPECT_EQ(path.Text(), "/b");
}

}  // namespace
