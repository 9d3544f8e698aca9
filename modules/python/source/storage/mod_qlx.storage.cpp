// The module qlx.storage.

#include "storage/storage.h"

namespace qlx {

PyMethodDef g_storageFunctions[] = {
    {},
};

}  // namespace qlx
