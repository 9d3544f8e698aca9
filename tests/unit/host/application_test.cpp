// The order in which the application takes the module through its life.

#include <stdio.h>
#include <sys/wait.h>

#include "support.h"

namespace {

struct Outcome {
  std::string out, error;
  int exitCode;
};

Outcome RunApplication(const TempFolder& folder) {
  const std::string errorFile = (folder.Path() / "error").string();
  FILE* pipe = popen(("exec " QLXPY " 2>" + errorFile).c_str(), "r");
  Outcome run;
  for (int c; (c = fgetc(pipe)) != EOF;) run.out += c == '\n' ? ';' : char(c);
  run.exitCode = WEXITSTATUS(pclose(pipe));
  std::ifstream error(errorFile);
  run.error.assign(std::istreambuf_iterator<char>(error), {});
  return run;
}

TEST(Application, StagesRunInOrderWhateverFails) {
  const std::string start = "open;bring up;message 1;start;message 1000;message 1026805;";
  const std::string end = "message 1001;message 1026848;message 200000272;shut down;free plug-in;close;";
  const std::string unregistered = "message 1001;message 1026848;message 200000272;shut down;close;";
  const struct {
    const char *fail, *quit, *exit;
    std::string out;
    const char* error;  // a part of it; empty: nothing is said
    int exitCode;
  } cases[] = {
      {"", nullptr, nullptr, start + "message 450000215;" + end, "", 0},
      {"", nullptr, "7", start + "message 450000215;" + end, "", 7},
      {"", "1", nullptr, start + end, "", 0},
      {"open", nullptr, nullptr, "", "refused this host, version 23100\n", 2},
      {"bring up", nullptr, nullptr, "open;bring up;" + unregistered, "qlxpy: no interpreter\n", 2},
      {"message", nullptr, nullptr, "open;bring up;message 1;" + unregistered, "qlxpy: the module could not",
       2},
      {"start", nullptr, nullptr, start + "message 450000215;" + end, "", 0},
      {"start", nullptr, "7", start + "message 450000215;" + end, "", 7},
  };
  TempFolder folder;
  Environment module("QLX_MODULE", RECORDING_MODULE);
  Environment home("QLX_HOME", (folder.Path() / "home").c_str());
  for (const auto& c : cases) {
    Environment fail("RECORD_FAIL", c.fail), quit("RECORD_QUIT", c.quit), exit("RECORD_EXIT", c.exit);
    const Outcome run = RunApplication(folder);
    EXPECT_EQ(run.out, c.out) << c.fail;
    EXPECT_EQ(run.exitCode, c.exitCode) << c.fail;
    EXPECT_TRUE(*c.error ? run.error.find(c.error) != run.error.npos : run.error.empty()) << run.error;
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "home"));
  }
}

TEST(Application, MissingPartsAreNamed) {
  TempFolder folder;
  const std::string file = folder.Write("file").string();
  const struct {
    const char* module;
    std::string home, error;
    int exitCode;
  } cases[] = {
      {RECORDING_MODULE, file + "/home",
       "qlxpy: can't create the folder '" + file + "/home': Not a directory\n", 0},
      {"/none/qlx.so", folder.Path(), "qlxpy: can't load the module '/none/qlx.so': ", 2},
      {NO_MODULE, folder.Path(), "does not export qlx_main\n", 2},
  };
  for (const auto& c : cases) {
    Environment module("QLX_MODULE", c.module), home("QLX_HOME", c.home.c_str());
    const Outcome run = RunApplication(folder);
    EXPECT_NE(run.error.find(c.error), run.error.npos) << run.error;
    EXPECT_EQ(std::count(run.error.begin(), run.error.end(), '\n'), 1) << run.error;
    EXPECT_EQ(run.exitCode, c.exitCode);
  }
}

}  // namespace
