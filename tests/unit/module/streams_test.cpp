#include <cstdlib>
#include <string>

#include "interpreter/lib_python_output.h"
#include "interpreter/lib_python_streams.h"
#include "support.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

constexpr const char* kMark = "... truncated";

class StreamsTest : public InterpreterTest {
 protected:
  void SetUp() override {
    InterpreterTest::SetUp();
    ASSERT_TRUE(Run("import io, sys\nsys.stdout = io.StringIO()\nsys.stderr = io.StringIO()"));
  }
  // What a stream of the interpreter got since the last call.
  static std::string Written(const std::string& name = "stdout") {
    const std::string text = Eval(("sys." + name + ".getvalue()").c_str());
    EXPECT_TRUE(Run(("sys." + name + " = io.StringIO()").c_str()));
    return text;
  }
  // The same text by both ways; they give the same.
  static std::string Write(const std::string& text) {
    qlx::WriteFormatToStdout("%s", text.c_str());
    const std::string formatted = Written();
    qlx::WriteToSysStream("stdout", stdout, kelvar::Bytes(text));
    EXPECT_EQ(Written(), formatted);
    return formatted;
  }
  // What a write leaves on the C stream that stands in.
  static std::string FallBack(const std::string& text) {
    char* bytes = nullptr;
    size_t size = 0;
    FILE* file = open_memstream(&bytes, &size);
    qlx::WriteToSysStream("stdout", file, kelvar::Bytes(text));
    std::fclose(file);
    const std::string result(bytes, size);
    std::free(bytes);
    CaptureStdout();
    qlx::WriteFormatToStdout("%s", text.c_str());
    EXPECT_EQ(GetCapturedStdout(), result);
    return result;
  }
};

TEST_F(StreamsTest, LongTextsAreCutAtACharacter) {
  const std::string x(1000, 'x'), e = "\xc3\xa9", euro = "\xe2\x82\xac", face = "\xf0\x9f\x98\x80";
  const auto head = [&](size_t count) { return x.substr(0, count); };
  const struct {
    std::string text, written;
  } cases[] = {
      {"", ""},
      {x, x},
      {x + "y", x + kMark},
      {x + x, x + kMark},
      {head(998) + e, head(998) + e},
      {head(998) + e + "y", head(998) + e + kMark},
      {head(999) + e, head(999) + kMark},
      {head(997) + euro + "y", head(997) + euro + kMark},
      {head(998) + euro, head(998) + kMark},
      {head(999) + euro, head(999) + kMark},
      {head(996) + face + "y", head(996) + face + kMark},
      {head(997) + face, head(997) + kMark},
      {head(998) + face, head(998) + kMark},
      {head(999) + face, head(999) + kMark},
  };
  for (const auto& c : cases) EXPECT_EQ(Write(c.text), c.written) << c.text.size() << c.text.substr(990);
}

TEST_F(StreamsTest, LinesGoToTheirStreams) {
  qlx::PrintLineToStdout(kelvar::Text("out"));
  qlx::PrintLineToStderr(kelvar::Text("error"));
  qlx::WriteToStderr(kelvar::Text("more"));
  EXPECT_EQ(Written(), "out\n");
  EXPECT_EQ(Written("stderr"), "error\nmore");
}

TEST_F(StreamsTest, ThePendingErrorSurvives) {
  const auto write = [](const char* text) {
    PyErr_SetString(PyExc_TypeError, "mine");
    qlx::WriteFormatToStdout("%s", text);
    EXPECT_EQ(Take(PyExc_TypeError), "mine");
  };
  write("fine");
  EXPECT_EQ(Written(), "fine");
  ASSERT_TRUE(Run("class Bad:\n  def write(self, text): raise OSError('full')\nsys.stdout = Bad()"));
  CaptureStdout();
  write("rescued");
  EXPECT_EQ(GetCapturedStdout(), "rescued");
  EXPECT_TRUE(Run("sys.stdout = io.StringIO()")) << "the end flushes it";
}

TEST_F(StreamsTest, TheCStreamStandsIn) {
  const std::string x(1000, 'x'), lone = "\xff\n";
  EXPECT_EQ(FallBack(lone), lone) << "no str can hold it";
  EXPECT_EQ(Written(), "");
  const char* failing[] = {
      "class Bad:\n  def write(self, text): raise ValueError\nsys.stdout = Bad()",
      "sys.stdout = None",
      "sys.stdout = io.StringIO()\nsys.stdout.close()",
  };
  for (const char* source : failing) {
    ASSERT_TRUE(Run(source));
    EXPECT_EQ(FallBack("text"), "text") << source;
    EXPECT_EQ(FallBack(x + "y"), x + kMark) << source;
    EXPECT_FALSE(PyErr_Occurred());
  }
  ASSERT_TRUE(Run("del sys.stdout"));
  EXPECT_EQ(FallBack(x + "y" + x), x + "y" + x) << "whole where there is no stream";
}

TEST_F(StreamsTest, AStreamMayGoWhileItWrites) {
  ASSERT_TRUE(
      Run("got = []\nclass Shy:\n  def write(self, text):\n    got.append(len(text))\n"
          "    sys.__dict__.pop('stdout', None)\nsys.stdout = Shy()"));
  qlx::WriteFormatToStdout("%s", std::string(2000, 'x').c_str());
  EXPECT_EQ(Eval("got"), "[1000, 13]");
}

TEST_F(StreamsTest, ReportsOfABadResult) {
  ASSERT_TRUE(
      Run("\n\ndef answer(self):\n  pass\nclass Bare: pass\nclass Node:\n  def Plain(self): pass\n"
          "Node.Full, Node.Other = Bare(), Bare()\nNode.Full.im_func = answer\nNode.Other.im_func = 5\n"
          "node = Node()"));
  const std::string text =
      "Traceback(most recent call last):\n  File \"<part.py>\", line 3, in <module>\n"
      "TypeError: Full expected bool, not ";
  qlx::ReportBadResult(Get("node"), "Full", "bool", Get("node"));
  EXPECT_EQ(Written("stderr"), text + "Node\n");
  qlx::ReportBadResult(Get("node"), "Full", "bool", Py_None);
  EXPECT_EQ(Written("stderr"), text + "None\n");
  EXPECT_EQ(TextHost::diagnostics, (std::vector<std::string>{text + "Node\n", text + "None\n"}));
  EXPECT_FALSE(PyErr_Occurred());
  for (const char* method : {"Plain", "absent"}) {
    qlx::ReportBadResult(Get("node"), method, "bool", Py_None);
    EXPECT_NE(Take(PyExc_AttributeError).find(method == std::string("Plain") ? "im_func" : "absent"),
              std::string::npos);
  }
  qlx::ReportBadResult(Get("node"), "Other", "bool", Py_None);
  EXPECT_FALSE(PyErr_Occurred());
  EXPECT_EQ(Written("stderr"), "");
}

TEST_F(StreamsTest, ErrorsOfBridges) {
  const std::vector<std::vector<uint64_t>> none, quit = {{1026812, 0, 0}};
  const struct {
    const char *source, *printed;  // printed: the end of what standard error got
    bool exits;
  } cases[] = {
      {"raise ValueError('bad')", "ValueError: bad\n", false},
      {"raise SystemExit(3)", "", true},
      {"class Leave(SystemExit): pass\nraise Leave", "", true},
      {"sys.excepthook = lambda *a: sys.exit(4)\n1/0", "", true},
      {"sys.excepthook = lambda *a: sys.stderr.write('hook')\n1/0", "hook", false},
      {"sys.excepthook = lambda: 0\n1/0", "ZeroDivisionError: division by zero\n", false},
      {"del sys.excepthook\n1/0", "ZeroDivisionError: division by zero\n", false},
  };
  for (const auto& c : cases) {
    TextHost::events.clear();
    ASSERT_FALSE(Run(c.source));
    qlx::PrintBridgeError();
    EXPECT_EQ(TextHost::events, c.exits ? quit : none) << c.source;
    EXPECT_EQ(qlx::IsSystemExitPending(), c.exits) << c.source;
    PyErr_Clear();
    const std::string printed = Written("stderr"), end = c.printed;
    EXPECT_TRUE(end.empty() ? printed.empty() : printed.ends_with(end)) << c.source << "\n" << printed;
  }
}

}  // namespace
