// A small host in memory: enough of the boundary to start and end the scripting module, with every
// value that crosses counted. One at a time in a process.
#ifndef ENTRY_FAKE_APPLICATION_H
#define ENTRY_FAKE_APPLICATION_H

#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "boundary/fake_host.h"

// What crossed and has not come back yet. Giving back what was never handed out fails the test.
class Ledger {
 public:
  void Add(const char* kind, const void* value);
  bool Remove(const char* kind, const void* value);
  std::string Left() const;  // one line for each, empty: nothing

  // The allocation with that number, from now on and counted from 0, fails; negative: none.
  void FailAt(int64_t number) { failAt_ = number; }
  bool Allowed();
  bool Failed() const { return failAt_ == kDone; }

 private:
  static constexpr int64_t kDone = -2;
  mutable std::mutex mutex_;
  std::map<const void*, const char*> live_;
  int64_t failAt_ = -1;
};

struct Logger {
  std::string id;
  std::vector<std::pair<int32_t, int32_t>> outputs;  // output, level
};

struct LogLine {
  Logger* logger;
  int32_t level;
  std::string text;
  std::string file;  // "-": null
  int32_t line;
};

class FakeApplication {
 public:
  FakeApplication();
  ~FakeApplication();
  FakeApplication(const FakeApplication&) = delete;

  // Every table whole again, at `version`.
  void ResetTables(int32_t version = HOST_VERSION_MINIMUM);
  void FillPlatformRecord(TavorRecord* record) const;

  void Record(const std::string& event);
  bool Happened(const std::string& event) const;
  std::string Output() const;  // log, console, prints and diagnostics, in the order of writing
  std::string PythonLibrariesFolder(bool local) const { return (local ? home : library) + "/prefs/python37"; }

  std::filesystem::path root;
  std::string startup, library, user, home, modulePath;
  std::string identity = "net.tavor.application.test";
  std::vector<std::string> arguments = {"application"};

  // What a test may spoil: the groups as this host offers them, and services that it lacks.
  HostTables tables{};
  HostGeneral general;
  HostStringGroup strings;
  HostFilenameGroup filenames;
  HostBaseFileGroup baseFiles;
  HostResourceGroup resources;
  HostPluginGroup plugins;
  std::set<std::string> lackingServices;

  // What the module did.
  Ledger ledger;
  std::vector<std::string> events;
  std::vector<LogLine> log;
  std::string console, diagnostics;
  std::map<std::string, std::vector<std::string>> moduleInfos;
  std::map<std::string, std::map<std::string, void*>> registry;
  std::map<std::string, Logger> loggers;
  Logger defaultLogger{"default", {}};
  std::map<int32_t, std::pair<int32_t, const void*>> libraries;
  ModuleInitialization pair{};
  ResourceSymbolHook symbolHook = nullptr;

 private:
  void InstallValues();
  void InstallFiles();
  void InstallGeneral();
  void InstallServices();

  mutable std::mutex mutex_;
};

// Host values on the test's side; the ledger counts them as well.
class Text {
 public:
  explicit Text(std::string_view text);
  ~Text();
  Text(const Text&) = delete;
  operator const HostString*() const { return &word_; }

 private:
  HostString word_;
};

class Path {
 public:
  explicit Path(std::string_view text);
  ~Path();
  Path(const Path&) = delete;
  operator const HostFilename*() const { return &word_; }
  HostFilename* Word() { return &word_; }

 private:
  HostFilename word_;
};

std::string View(const HostString* text);

// Take over what an entry answered.
std::string Take(HostString text);
std::string Take(HostFilename path);
std::string TakeError(HostResult result);  // empty: no error

#endif
