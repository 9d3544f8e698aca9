// The folders that the module uses. "python37" is their settled name with every version.

#include "interpreter/lib_python_paths.h"

#include <initializer_list>
#include <string>

#include "interpreter/lib_python.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "tavor/logger.h"

namespace qlx {
namespace {

// Empty when the host has no such folder: a relative path would name another one.
Filename Below(Filename folder, std::initializer_list<const char*> names) {
  if (!folder.Content()) return {};
  for (const char* name : names)
    if (folder.Append(kelvar::Text(name))) return {};
  return folder;
}

}  // namespace

Filename GetFrameworkFolder() { return Below(kelvar::GeGetStartupPath(), {"python37.linux64.framework"}); }

Filename GetPreferenceFolder() {
  Filename folder = Below(kelvar::GeGetQLXPath(HOST_PATH_HOME), {"prefs", "python37"});
  if (folder.Content() && !kelvar::HostFileExists(folder, true))
    if (tavor::Error error = kelvar::CreateFolder(folder))
      Log("the folder '" + std::string(kelvar::View(folder.GetString())) +
              "' can't be created: " + error.Text(),
          LOGGER_LEVEL_ALL);
  return folder;
}

Filename GetGlobalPreferenceFolder() {
  return Below(kelvar::GeGetQLXPath(HOST_PATH_LIBRARY), {"prefs", "python37"});
}

Filename GetSystemPluginFolder() { return Below(kelvar::GeGetStartupPath(), {"plugins"}); }
Filename GetUserPluginFolder() { return Below(kelvar::GeGetQLXPath(HOST_PATH_HOME), {"plugins"}); }
Filename GetSystemScriptFolder() { return Below(kelvar::GeGetQLXPath(HOST_PATH_LIBRARY), {"scripts"}); }
Filename GetUserScriptFolder() { return Below(kelvar::GeGetQLXPath(HOST_PATH_USER_LIBRARY), {"scripts"}); }

Filename GetPackageFolder() {
  return Below(kelvar::GeGetQLXPath(HOST_PATH_HOME), {"library", "python", "packages", "linux64"});
}

}  // namespace qlx
