// What the entry point keeps for the rest of the module.
#ifndef INTERPRETER_MAIN_H
#define INTERPRETER_MAIN_H

#include "kelvar/string.h"

namespace qlx {

// There from message 1 until the module is closed.
struct LanguageInfo {
  String language;  // as the host names it, such as "en-US"
  String country;   // the part behind the first "-"
  bool hasPainterLibrary = false;
  bool trackLeaks = false;
};

// Whether action 1 has accepted the host: before that its values can't be used.
bool HasHostTables();

// Null before message 1 succeeded, and after the close.
LanguageInfo* GetLanguageInfo();

// What LanguageInfo says of leaks, false without one: tested for every instance that is made.
extern bool g_trackLeaks;

// The host's test of a name in a resource file.
int32_t TestResourceSymbol(const HostString* name);

}  // namespace qlx

#endif
