// Where the interpreter finds its standard library.

#include "interpreter/lib_python_home.h"

#include <unistd.h>

#include <cstdlib>

#include "python_interpreter.h"

namespace qlx {
namespace {

bool IsReadable(const std::string& path) { return access(path.c_str(), R_OK) == 0; }

std::string ZipName() {
  std::string version = QLX_PYTHON_VERSION;
  version.erase(version.find('.'), 1);
  return "python" + version + ".zip";
}

// The first thing that is missing in a folder of the standard library; empty: nothing.
std::string MissingFile(const std::string& folder) {
  for (const char* needed : {"os.py", "site.py", "codecs.py", "io.py", "abc.py", "encodings/__init__.py"})
    if (!IsReadable(folder + "/" + needed)) return needed;
  return "";
}

}  // namespace

tavor::Result<std::string> FindInterpreterHome(bool useEnvironment) {
  const char* home = useEnvironment ? std::getenv("PYTHONHOME") : nullptr;
  std::string folder = QLX_PYTHON_STDLIB;
  std::string origin = "the interpreter '" QLX_PYTHON_EXECUTABLE "'";
  if (home && *home) {
    const std::string prefix = std::string(home).substr(0, std::string(home).find(':'));
    folder = prefix + "/lib/python" QLX_PYTHON_VERSION;
    origin = "PYTHONHOME is '" + std::string(home) + "'";
    if (IsReadable(prefix + "/lib/" + ZipName())) return std::string(QLX_PYTHON_EXECUTABLE);
  }
  const std::string missing = MissingFile(folder);
  if (missing.empty()) return std::string(QLX_PYTHON_EXECUTABLE);
  return tavor::Error("the standard library of Python " QLX_PYTHON_VERSION " was not found: no '" + missing +
                          "' in '" + folder + "' (" + origin + ")",
                      HOST_RESULT_NOT_FOUND);
}

}  // namespace qlx
