// What the tables offer to the rest of the host.
#ifndef HOST_TABLES_TABLES_H
#define HOST_TABLES_TABLES_H

#include <string>
#include <string_view>
#include <vector>

#include "kelvar.framework/source/tables/t_host.h"

namespace host {

// State that is never destroyed: the module's own destructors may still come back to the host
// when the process ends.
template <class State>
State& Lasting() {
  static State& state = *new State;
  return state;
}

// The pair that the module registered; all zero when it did not.
ModuleInitialization GetModuleInitialization();

// Whether the status bar shows that the application is busy.
bool IsStatusBarBusy();

// Whether the module knows a name as a constant, asked once per name. Main thread.
bool IsKnownSymbol(std::string_view name);

// Sends a message to every registered plug-in; whether one of them answered. Main thread.
bool MessagePlugins(int32_t id, void* data);

// Ends the registered plug-ins, the last one first. Main thread.
void FreePlugins();

// Writes one warning through the default logger; the line end is added.
void Warn(std::string_view text);

struct ModuleInfo {
  std::string id;
  std::string shortName;
  std::string longName;
  std::string version;
};
std::vector<ModuleInfo> GetModuleInfos();

}  // namespace host

#endif
