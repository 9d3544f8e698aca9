#include "scene/turn.h"

#include <cstddef>

#include "boundary/host.h"
#include "python.framework/source/tavor/tables/t_cpythonlibrary.h"
#include "python.framework/source/tavor/tables/t_modulelibrary.h"

namespace host {
namespace {

// An interface begins with its table.
const CPythonLibraryInterface& TableOf(CPythonLibrary* library) {
  return **reinterpret_cast<const CPythonLibraryInterface* const*>(library);
}

CPythonLibrary* FindInterpreter() {
  const auto* module =
      static_cast<const ModuleLibraryTable*>(general::FindLibrary(MODULE_LIBRARY_ID, MODULE_LIBRARY_VERSION));
  CPythonLibrary* library = module && module->GetLibrary ? module->GetLibrary() : nullptr;
  if (!library) return nullptr;
  const CPythonLibraryInterface& table = TableOf(library);
  const bool isLongEnough = table.head.size > offsetof(CPythonLibraryInterface, CPyGilState_Release);
  return isLongEnough && table.CPyGilState_Ensure && table.CPyGilState_Release ? library : nullptr;
}

}  // namespace

SceneTurn::SceneTurn() : library_(FindInterpreter()) {
  if (library_) state_ = TableOf(library_).CPyGilState_Ensure(library_);
}

SceneTurn::~SceneTurn() {
  if (state_ >= 0) TableOf(library_).CPyGilState_Release(library_, state_);
}

}  // namespace host
