// Modules and classes that other plug-ins add to the package.
#ifndef KIT_I_DYNAMIC_H
#define KIT_I_DYNAMIC_H

namespace qlx {

void CreateModuleRegistry();
void FreeModuleRegistry();

// Asks the other plug-ins for their classes and registers what they gave. Lock held.
void RegisterDynamicModules();

}  // namespace qlx

#endif
