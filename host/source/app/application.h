// The life of the process: the module comes up, does the application's work, and goes down.
#ifndef HOST_APP_APPLICATION_H
#define HOST_APP_APPLICATION_H

#include <string_view>

#include "app/module_loader.h"

namespace host {

class Application {
 public:
  Application(int argc, char** argv);

  // The exit code of the process.
  int Run();

 private:
  void CreateHome() const;
  bool Open(const Module& module);
  void RunOpened(const Module& module);
  // Whether the module can be given work.
  bool Start(const Module& module);
  bool BringUp();
  void Work(const Module& module);
  void DrainEvents();
  void End(const Module& module);
  // Tells what went wrong in the start; the process ends with 2, unless it ends with another
  // error anyway.
  void Fail(std::string_view what);
  int ExitCode() const;

  HostTables tables_{};
  bool failed_ = false;
  bool quit_ = false;
};

}  // namespace host

#endif
