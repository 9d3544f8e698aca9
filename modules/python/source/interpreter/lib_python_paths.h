// The folders that the module uses.
#ifndef INTERPRETER_LIB_PYTHON_PATHS_H
#define INTERPRETER_LIB_PYTHON_PATHS_H

#include "kelvar/filename.h"

namespace qlx {

// What the application ships for the interpreter: <startup>/python37.linux64.framework.
Filename GetFrameworkFolder();

// The user's settings: <home>/prefs/python37. Created when it is missing.
Filename GetPreferenceFolder();

// The settings for everybody: <library>/prefs/python37.
Filename GetGlobalPreferenceFolder();

Filename GetSystemPluginFolder();  // <startup>/plugins
Filename GetUserPluginFolder();    // <home>/plugins
Filename GetSystemScriptFolder();  // <library>/scripts
Filename GetUserScriptFolder();    // <user library>/scripts

// The user's Python packages: <home>/library/python/packages/linux64.
Filename GetPackageFolder();

}  // namespace qlx

#endif
