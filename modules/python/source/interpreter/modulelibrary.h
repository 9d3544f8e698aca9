// The table that other plug-ins of the host call the module through.
#ifndef INTERPRETER_MODULELIBRARY_H
#define INTERPRETER_MODULELIBRARY_H

namespace qlx {

void PublishModuleLibrary();

}  // namespace qlx

#endif
