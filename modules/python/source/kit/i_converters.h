// The converters that other modules find in the registry.
#ifndef KIT_I_CONVERTERS_H
#define KIT_I_CONVERTERS_H

namespace qlx {

// Registers one converter for each type that crosses by reference, and one more where the
// crossing moves it. An id that another module holds stays with it.
void RegisterDataTypeConverters();

}  // namespace qlx

#endif
