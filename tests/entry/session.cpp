#include "session.h"

#include <dlfcn.h>

#include <fstream>
#include <iostream>

bool InterpreterUp() {
  void* library = dlopen(PYTHON_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  if (!library) return false;
  const auto isInitialized = reinterpret_cast<int (*)()>(dlsym(library, "Py_IsInitialized"));
  const bool up = isInitialized && isInitialized();
  dlclose(library);
  return up;
}

void* PythonSymbol(const char* name) {
  void* symbol = dlsym(RTLD_DEFAULT, name);
  EXPECT_TRUE(symbol) << name << " is not global";
  return symbol;
}

void EntryTest::Load() {
  handle = dlopen(MODULE_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_TRUE(handle) << dlerror();
  main = reinterpret_cast<QlxMain>(dlsym(handle, "qlx_main"));
  tavor = static_cast<TavorRecord*>(dlsym(handle, "g_tavor"));
  yieldDelegate = static_cast<CpuYieldDelegate*>(dlsym(handle, "g_CpuYieldDelegate"));
  ASSERT_TRUE(main && tavor && yieldDelegate);
  app.FillPlatformRecord(tavor);
}

void EntryTest::Unload() {
  EXPECT_EQ(dlclose(handle), 0);
  main = nullptr;
}

void EntryTest::WatchErrors() {
  testing::internal::CaptureStderr();
  watching = true;
}

void EntryTest::LeaveErrors() {
  if (watching) std::cerr << testing::internal::GetCapturedStderr();
  watching = false;
}

std::string EntryTest::Printed() {
  if (watching) errors += testing::internal::GetCapturedStderr();
  if (watching) testing::internal::CaptureStderr();
  return app.Output() + errors;
}

void EntryTest::ForgetPrinted() {
  Printed();
  errors.clear();
  app.log.clear();
  app.console.clear();
  app.diagnostics.clear();
}

void EntryTest::TearDown() {
  LeaveErrors();
  EXPECT_EQ(app.ledger.Left(), "") << "values that did not come back";
  EXPECT_FALSE(InterpreterUp());
  EXPECT_FALSE(app.loggers.contains(kLogger)) << "the logger outlives the module";
  EXPECT_FALSE(app.registry[kMachines].contains(kMachine)) << "the machine's entry outlives the machine";
}

void EntryTest::WriteStartupScript(bool local, const std::string& text) {
  const std::filesystem::path folder = app.PythonLibrariesFolder(local);
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "python_init.py", std::ios::binary) << text;
}

int32_t EntryTest::Start() {
  EXPECT_EQ(Open(), 1);
  EXPECT_TRUE(app.Happened("initialization"));
  EXPECT_EQ(BringUp(), "");
  EXPECT_EQ(Message(HOST_MESSAGE_INIT), 1);
  return Call(QLX_ACTION_PLUGIN_START);
}

void EntryTest::StartWhole(int32_t started) {
  EXPECT_EQ(Start(), started) << app.Output();
  EXPECT_EQ(Message(HOST_MESSAGE_ALL_LOADED), 1);
  EXPECT_EQ(Message(HOST_MESSAGE_LOAD_PLUGINS), 1);
  ASSERT_TRUE(InterpreterUp()) << app.Output();
}

void EntryTest::EndStages(int32_t answer) {
  EXPECT_EQ(Message(HOST_MESSAGE_END_1), answer);
  EXPECT_EQ(Message(HOST_MESSAGE_END_2), answer);
  EXPECT_EQ(Message(HOST_MESSAGE_END_3), answer);
}

void EntryTest::End(int32_t answer) {
  EndStages(answer);
  app.pair.Shutdown();
  EXPECT_EQ(Close(), 1);
}

void EntryTest::RoundWithoutPython() {
  app.events.clear();
  EXPECT_EQ(Start(), 1);
  EXPECT_FALSE(InterpreterUp());
  EXPECT_TRUE(app.Happened("message 1026661"));
  EXPECT_FALSE(app.Happened("stop 1 1 1")) << "no start-up script runs";
  EXPECT_TRUE(app.moduleInfos.contains("net.tavor.moduleinfo.python2"));
  ExpectAbsent();
  EXPECT_FALSE(app.Happened("message 1026662"));
  End(-1);
}

void EntryTest::ExpectAbsent() {
  struct Row {
    int32_t id, answer;
  };
  for (const auto& [id, answer] :
       {Row{HOST_MESSAGE_ALL_LOADED, -1}, Row{HOST_MESSAGE_END_1, -1}, Row{HOST_MESSAGE_LOAD_PLUGINS, -1},
        Row{HOST_MESSAGE_END_2, -1}, Row{HOST_MESSAGE_END_3, -1}, Row{HOST_MESSAGE_ACKNOWLEDGE, 1},
        Row{12345, -1}, Row{-1, -1}})
    EXPECT_EQ(Message(id), answer) << "message " << id;
  int32_t word[2] = {-1, -1};
  EXPECT_EQ(Message(HOST_MESSAGE_VERSION, word), 1);
  EXPECT_EQ(word[0], 0);
  EXPECT_EQ(word[1], -1) << "message 0 writes 32 bits";
}

const ModuleLibraryTable& EntryTest::Library() {
  static const ModuleLibraryTable none{};
  const auto found = app.libraries.find(MODULE_LIBRARY_ID);
  EXPECT_NE(found, app.libraries.end()) << "no library was published";
  return found == app.libraries.end() ? none : *static_cast<const ModuleLibraryTable*>(found->second.second);
}
