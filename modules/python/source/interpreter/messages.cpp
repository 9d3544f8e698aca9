// The host's messages: one row for each id.

#include "interpreter/messages.h"

#include <string_view>

#include "boundary/guard.h"
#include "interpreter/lib_python.h"
#include "interpreter/lib_python_commandline.h"
#include "interpreter/lib_python_leaks.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_output.h"
#include "interpreter/main.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "kit/i_package.h"
#include "plugins/plugins.h"
#include "scene/documents.h"
#include "threading/threads.h"

namespace qlx {
namespace {

constexpr int32_t kPainterLibrary = 1001428;

bool AnswerVersion(void* data) {
  if (data) *static_cast<int32_t*>(data) = 0;
  return true;
}

bool AnswerInit(void*) { return InitModule(); }

bool AnswerAllLoaded(void*) {
  const bool hasPainter = kelvar::FindLibrary(kPainterLibrary, 0) != nullptr;
  if (LanguageInfo* info = GetLanguageInfo()) info->hasPainterLibrary = hasPainter;
  if (!IsPythonPresent()) return false;
  if (tavor::Error error = RegisterSymbols(true)) LogError(error);
  AllocDocumentCallbacks();
  return true;
}

bool AnswerLoadPlugins(void*) {
  if (!IsPythonPresent()) return false;
  LibraryGilScope lock(LibraryRef());
  if (tavor::Error error = RegisterSymbols(false)) LogError(error);
  const tavor::Error error = LoadAllPlugins(1);
  if (error) LogError(error);
  return !error;
}

bool AnswerEnd1(void*) {
  if (!IsPythonPresent()) return false;
  GilScope lock;
  FreeDocumentCallbacks();
  kelvar::GePluginMessage(kMessageScriptsEnd, nullptr);
  StopPythonThreads();
  DropRegisteredClasses();
  DropPluginObjects();
  FreeThreadList();
  ResetExceptHook();
  return true;
}

bool AnswerEnd2(void*) {
  if (!IsPythonPresent()) return false;
  GilScope lock;
  kelvar::GePluginMessage(kMessagePythonEnds, nullptr);
  PyGC_Collect();
  ReleasePackage();
  ReportLeaks();
  return true;
}

bool AnswerEnd3(void*) {
  if (!IsPythonPresent()) return false;
  {
    GilScope lock;
    FreeAllPlugins();
    PyGC_Collect();
  }
  VmShutdown();
  return true;
}

bool AnswerNothing(void*) { return true; }
bool AnswerRunApplication(void*) { return RunApplication(); }

struct MessageRow {
  int32_t id;
  bool (*answer)(void* data);
};

constexpr MessageRow kRows[] = {
    {HOST_MESSAGE_VERSION, AnswerVersion},
    {HOST_MESSAGE_INIT, AnswerInit},
    {HOST_MESSAGE_ALL_LOADED, AnswerAllLoaded},
    {HOST_MESSAGE_LOAD_PLUGINS, AnswerLoadPlugins},
    {HOST_MESSAGE_END_1, AnswerEnd1},
    {HOST_MESSAGE_END_2, AnswerEnd2},
    {HOST_MESSAGE_END_3, AnswerEnd3},
    {HOST_MESSAGE_ACKNOWLEDGE, AnswerNothing},
    {HOST_MESSAGE_RUN_APPLICATION, AnswerRunApplication},
};

}  // namespace

bool PluginMessage(int32_t id, void* data) {
  if (IsPythonPresent()) ForwardPluginMessage(id, data);
  for (const MessageRow& row : kRows)
    if (row.id == id) return row.answer(data);
  return false;
}

int32_t TestResourceSymbol(const HostString* name) {
  return boundary::Guard(
      [&]() -> int32_t {
        if (!name || !IsPythonPresent()) return -1;
        GilScope lock;
        const std::string_view text = kelvar::View(*reinterpret_cast<const String*>(name));
        PyObject* key = PyUnicode_DecodeUTF8(text.data(), Py_ssize_t(text.size()), "replace");
        PyObject* dictionary = PackageDictionary();
        PyObject* value = key && dictionary ? PyDict_GetItemWithError(dictionary, key) : nullptr;
        Py_XDECREF(key);
        return value && PyLong_Check(value) ? HOST_SYMBOL_KNOWN : -1;
      },
      int32_t(-1));
}

}  // namespace qlx
