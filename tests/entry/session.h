// The module as a host sees it, and the order in which a host drives it.
#ifndef ENTRY_SESSION_H
#define ENTRY_SESSION_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "fake_application.h"
#include "python.framework/source/tavor/tables/t_modulelibrary.h"
#include "python.framework/source/tavor/tables/t_virtualmachinescope.h"

constexpr const char* kMachineClasses = "net.tavor.python.registry.virtualmachines";
constexpr const char* kMachineClass = "net.tavor.python.virtualmachine.cpython";
constexpr const char* kMachines = "net.tavor.python.virtualmachines";
constexpr const char* kMachine = "net.tavor.python.virtualmachine.qlxpy37";
constexpr const char* kLogger = "net.tavor.logger.python";

// Whether an interpreter runs in this process, asked of its library and not of the module.
bool InterpreterUp();

inline void WithoutInterpreter() { setenv("QLX_PYTHON_LIBRARY", "/nonexistent/lib.so", 1); }

// A symbol of the interpreter's library, which the module has made global.
void* PythonSymbol(const char* name);
template <class Function>
Function* Python(const char* name) {
  return reinterpret_cast<Function*>(PythonSymbol(name));
}

// The table in the first word of an object.
template <class Interface>
const Interface& TableOf(const void* object) {
  return **static_cast<const Interface* const*>(object);
}

class EntryTest : public testing::Test {
 protected:
  EntryTest() { Load(); }
  void TearDown() override;

  void Load();
  void Unload();
  void WriteStartupScript(bool local, const std::string& text);

  int32_t Call(int32_t action, void* p1 = nullptr, void* p2 = nullptr, void* p3 = nullptr) {
    return main(action, p1, p2, p3);
  }
  int32_t Message(int32_t id, void* data = nullptr) {
    return Call(QLX_ACTION_MESSAGE, reinterpret_cast<void*>(intptr_t(id)), data);
  }
  int32_t Open() { return Open(&app.tables); }
  // The path lives no longer than the call: the module keeps a copy.
  int32_t Open(void* tables) {
    Path path(app.modulePath);
    return Call(QLX_ACTION_OPEN, tables, nullptr, path.Word());
  }
  int32_t Close() { return Call(QLX_ACTION_CLOSE); }
  std::string BringUp() { return TakeError(app.pair.BringUp()); }
  // Action 1, the initialisation stage, message 1 and action 2, whose answer it gives.
  int32_t Start();
  // A whole start with Python there; action 2 answers `started`.
  void StartWhole(int32_t started = 1);
  // The three end stages, each with the same answer.
  void EndStages(int32_t answer);
  // The end stages, the other half of the initialisation pair, and action 3.
  void End(int32_t answer);
  // Every message as it answers without Python.
  void ExpectAbsent();
  // The whole order in a process where Python is absent, or does not come back.
  void RoundWithoutPython();

  // What the host and, from now on, the process's error stream were told.
  void WatchErrors();
  // Processes that are made from this one can't be watched.
  void LeaveErrors();
  std::string Printed();
  void ForgetPrinted();

  const ModuleLibraryTable& Library();
  VirtualMachine* Machine() { return static_cast<VirtualMachine*>(app.registry[kMachines][kMachine]); }

  FakeApplication app;
  void* handle = nullptr;
  QlxMain main = nullptr;
  TavorRecord* tavor = nullptr;
  CpuYieldDelegate* yieldDelegate = nullptr;

 private:
  bool watching = false;
  std::string errors;
};

#endif
