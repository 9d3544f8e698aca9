// The table that other plug-ins of the host call the module through.

#include "interpreter/modulelibrary.h"

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "boundary/guard.h"
#include "interpreter/lib_python.h"
#include "interpreter/lib_python_output.h"
#include "interpreter/lib_python_scriptscope.h"
#include "interpreter/lib_python_syntax.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "kit/i_conversion.h"
#include "python.framework/source/tavor/tables/t_modulelibrary.h"
#include "tavor/virtualmachinescope.h"

namespace qlx {
namespace {

int32_t IsPythonRunningWord() { return IsPythonPresent(); }
VirtualMachine* GetVirtualMachineWord() { return MachineRef(); }
CPythonLibrary* GetLibraryWord() { return LibraryRef(); }

// Runs a service with the lock. An error that was pending for the caller still is, and no other one.
template <class Service>
auto Serve(Service service, std::invoke_result_t<Service> failure = {}) {
  return boundary::Guard(
      [&]() -> std::invoke_result_t<Service> {
        if (!IsPythonPresent()) return failure;
        GilScope lock;
        const PreservedError pending;
        return service();
      },
      failure);
}

ScriptScope& Scope(ModuleScriptScope* self) { return *reinterpret_cast<ScriptScope*>(self); }
std::string_view View(const HostString* text) { return kelvar::View(*reinterpret_cast<const String*>(text)); }
const Filename& Path(const HostFilename* file) { return *reinterpret_cast<const Filename*>(file); }
PyObject* Object(CPyObject* object) { return reinterpret_cast<PyObject*>(object); }

// What a function of a scope and a name answers.
template <class Operation>
int32_t Named(ModuleScriptScope* self, const HostString* name, Operation operation) {
  if (!self || !name) return 0;
  return Serve([&]() -> int32_t { return operation(Scope(self), View(name)); });
}

int32_t Printed(bool ok) {
  if (!ok && PyErr_Occurred()) PrintAndClearError();
  return ok;
}

int32_t RunTextWord(const HostString* source, const HostString* name) {
  return boundary::Guard(
      [&]() -> int32_t {
        if (!IsPythonPresent() || !source || !name) return 0;
        auto scope = tavor::Ref<VirtualMachineScope>::Adopt(MachineRef()->CreateScope());
        if (!scope) return 0;
        const auto& nameText = *reinterpret_cast<const String*>(name);
        const auto& sourceText = *reinterpret_cast<const String*>(source);
        return !scope->Init(nameText, sourceText, ERRORHANDLING_PRINT, nullptr) && !scope->Execute();
      },
      0);
}

int32_t ExecuteScriptFileWord(const HostFilename* file) {
  if (!file) return 0;
  return Serve([&] { return Printed(ExecuteScriptFile(Path(file))); });
}

ModuleScriptScope* CreateWord() { return reinterpret_cast<ModuleScriptScope*>(new (std::nothrow) ScriptScope); }

void DestroyWord(ModuleScriptScope* self) {
  boundary::Guard([&] { delete reinterpret_cast<ScriptScope*>(self); });
}

int32_t InitWord(ModuleScriptScope* self) {
  return self ? Serve([&]() -> int32_t { return Scope(self).Init(); }) : 0;
}

int32_t ResetWord(ModuleScriptScope* self) {
  return self ? Serve([&]() -> int32_t { return Scope(self).Reset(); }) : 0;
}

void FreeWord(ModuleScriptScope* self) {
  if (!self) return;
  Serve([&] {
    Scope(self).Free();
    return 0;
  });
}

int32_t ContainsWord(ModuleScriptScope* self, const HostString* name) {
  return Named(self, name, [](ScriptScope& scope, std::string_view key) { return scope.Contains(key); });
}

CPyObject* GetWord(ModuleScriptScope* self, const HostString* name) {
  if (!self || !name) return nullptr;
  return Serve([&] { return reinterpret_cast<CPyObject*>(Scope(self).Get(View(name))); });
}

int32_t SetIntWord(ModuleScriptScope* self, const HostString* name, int32_t value) {
  return Named(self, name, [&](ScriptScope& scope, std::string_view key) { return scope.SetInt(key, value); });
}

int32_t SetNoneWord(ModuleScriptScope* self, const HostString* name) {
  return Named(self, name, [](ScriptScope& scope, std::string_view key) { return scope.SetNone(key); });
}

int32_t SetDataWord(ModuleScriptScope* self, const HostString* name, const HostGeData* data) {
  return Named(self, name,
               [&](ScriptScope& scope, std::string_view key) { return data && scope.SetData(key, *data); });
}

int32_t SetNodeWord(ModuleScriptScope* self, const HostString* name, QLXAtom* node, int32_t owned) {
  return Named(self, name,
               [&](ScriptScope& scope, std::string_view key) { return scope.SetNode(key, node, owned); });
}

int32_t SetFilenameWord(ModuleScriptScope* self, const HostString* name, const HostFilename* file) {
  return Named(self, name, [&](ScriptScope& scope, std::string_view key) {
    return file && scope.SetFilename(key, Path(file));
  });
}

int32_t SetObjectWord(ModuleScriptScope* self, const HostString* name, CPyObject* object) {
  return Named(self, name,
               [&](ScriptScope& scope, std::string_view key) { return scope.SetObject(key, Object(object)); });
}

int32_t ImportPackageWord(ModuleScriptScope* self) {
  return self ? Serve([&]() -> int32_t { return Scope(self).ImportPackage(); }) : 0;
}

int32_t RunWord(ModuleScriptScope* self, const HostString* source, const HostString* fileName,
                int32_t startMode, int32_t syntaxError) {
  if (!self || !source || !fileName) return 0;
  return Serve([&]() -> int32_t {
    const bool ok = Scope(self).Run(std::string(View(source)), std::string(View(fileName)), startMode);
    return syntaxError == SCRIPT_SYNTAX_ERROR_PRINT ? Printed(ok) : ok;
  });
}

int32_t IsCompleteWord(const HostString* source) {
  if (!source) return -1;
  return Serve([&]() -> int32_t { return IsComplete(std::string(View(source))); }, -1);
}

int32_t ExecuteTextWord(const HostString* source, const HostString* name, const HostFilename* file) {
  if (!source || !name) return 0;
  return Serve([&] {
    return Printed(
        ExecuteScriptText(std::string(View(source)), std::string(View(name)), file ? &Path(file) : nullptr));
  });
}

int32_t IsExecutingWord() {
  return Serve([]() -> int32_t { return IsScriptExecuting(); });
}

int32_t SetResourceWord(ModuleScriptScope* self, const HostString* name, GeResource* resource, int32_t owned) {
  return Named(self, name, [&](ScriptScope& scope, std::string_view key) {
    return scope.SetResource(key, resource, owned);
  });
}

int32_t SetThreadWord(ModuleScriptScope* self, const HostString* name, BaseThread* thread) {
  return Named(self, name,
               [&](ScriptScope& scope, std::string_view key) { return scope.SetThread(key, thread); });
}

CPyObject* GeDataToPythonWord(const HostGeData* data, BaseDocument* document) {
  if (!data) return nullptr;
  return Serve([&] { return reinterpret_cast<CPyObject*>(GeDataToPython(*data, document)); });
}

int32_t GeDataFromPythonWord(CPyObject* object, HostGeData* data) {
  if (!data) return 0;
  return Serve([&]() -> int32_t {
    GeData value = GeData::Adopt(std::exchange(*data, {}));
    const bool ok = GeDataFromPython(Object(object), value);
    *data = value.Release();
    return ok;
  });
}

constexpr ModuleLibraryTable kTable = {
    .bytes = sizeof(ModuleLibraryTable),
    .version = MODULE_LIBRARY_VERSION,
    .IsPythonRunning = IsPythonRunningWord,
    .GetVirtualMachine = GetVirtualMachineWord,
    .GetLibrary = GetLibraryWord,
    .RunText = RunTextWord,
    .ExecuteScriptFile = ExecuteScriptFileWord,
    .scriptScope =
        {
            .Create = CreateWord,
            .Destroy = DestroyWord,
            .Init = InitWord,
            .Reset = ResetWord,
            .Free = FreeWord,
            .Contains = ContainsWord,
            .Get = GetWord,
            .SetInt = SetIntWord,
            .SetNone = SetNoneWord,
            .SetData = SetDataWord,
            .SetNode = SetNodeWord,
            .SetFilename = SetFilenameWord,
            .SetObject = SetObjectWord,
            .ImportPackage = ImportPackageWord,
            .Run = RunWord,
            .IsComplete = IsCompleteWord,
            .ExecuteText = ExecuteTextWord,
            .IsExecuting = IsExecutingWord,
            .SetResource = SetResourceWord,
            .SetThread = SetThreadWord,
        },
    .conversion = {.GeDataToPython = GeDataToPythonWord, .GeDataFromPython = GeDataFromPythonWord},
};
static_assert(sizeof(ModuleLibraryTable) == MODULE_LIBRARY_WORDS * sizeof(void*));

}  // namespace

void PublishModuleLibrary() {
  if (!kelvar::InstallLibrary(MODULE_LIBRARY_ID, MODULE_LIBRARY_VERSION, &kTable))
    LogError(tavor::Error("the module's library can't be published"));
}

}  // namespace qlx
