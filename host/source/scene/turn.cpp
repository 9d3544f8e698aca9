#include "scene/turn.h"

#include "boundary/host.h"
#include "python.framework/source/tavor/tables/t_modulelibrary.h"

namespace host {

SceneTurn::SceneTurn() {
  const auto* module =
      static_cast<const ModuleLibraryTable*>(general::FindLibrary(MODULE_LIBRARY_ID, MODULE_LIBRARY_VERSION));
  if (!module || !module->GetLibrary) return;
  library_ = module->GetLibrary();
  if (library_) state_ = library_->CPyGilState_Ensure();
}

SceneTurn::~SceneTurn() {
  if (state_ >= 0) library_->CPyGilState_Release(state_);
}

}  // namespace host
