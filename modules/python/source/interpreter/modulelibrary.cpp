// The table that other plug-ins of the host call the module through.

#include "interpreter/modulelibrary.h"

#include "boundary/guard.h"
#include "interpreter/lib_python.h"
#include "kelvar/general.h"
#include "python.framework/source/tavor/tables/t_modulelibrary.h"
#include "tavor/virtualmachinescope.h"

namespace qlx {
namespace {

int32_t IsPythonRunningWord() { return IsPythonPresent(); }
VirtualMachine* GetVirtualMachineWord() { return MachineRef(); }
CPythonLibrary* GetLibraryWord() { return LibraryRef(); }

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

constexpr ModuleLibraryTable kTable = {
    .bytes = sizeof(ModuleLibraryTable),
    .version = MODULE_LIBRARY_VERSION,
    .IsPythonRunning = IsPythonRunningWord,
    .GetVirtualMachine = GetVirtualMachineWord,
    .GetLibrary = GetLibraryWord,
    .RunText = RunTextWord,
};
static_assert(sizeof(ModuleLibraryTable) == MODULE_LIBRARY_WORDS * sizeof(void*));

}  // namespace

void PublishModuleLibrary() {
  if (!kelvar::InstallLibrary(MODULE_LIBRARY_ID, MODULE_LIBRARY_VERSION, &kTable))
    LogError(tavor::Error("the module's library can't be published"));
}

}  // namespace qlx
