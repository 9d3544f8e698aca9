// The converters that other modules find in the registry.

#include "kit/i_converters.h"

#include "python.framework/source/tavor/tables/t_converter.h"
#include "tavor/registry.h"

namespace qlx {
namespace {

// A direction is null until its type is bound.
constexpr DataTypeConverter Row(const char* id) { return {sizeof(DataTypeConverter), 0, id, nullptr, nullptr}; }

DataTypeConverter g_converters[] = {
    Row("converter.python.qlx.BaseTag"),
    Row("converter.python.qlx.BaseDraw"),
    Row("converter.python.qlx.BaseList2D"),
    Row("converter.python.qlx.BaseObject"),
    Row("converter.python.qlx.documents.BaseDocument"),
    Row("converter.python.qlx.PolygonObject"),
    Row("converter.python.qlx.plugins.BaseDrawHelp"),
    Row("converter.python.qlx.SplineData"),
    Row("converter.python.qlx.FieldList"),
    Row("converter.python.qlx.move.BaseList2D"),
    Row("converter.python.qlx.move.BaseObject"),
    Row("converter.python.qlx.move.BaseTag"),
    Row("converter.python.qlx.move.PolygonObject"),
    Row("converter.python.qlx.documents.move.BaseDocument"),
    Row("converter.python.qlx.move.BaseDraw"),
    Row("converter.python.qlx.plugins.move.BaseDrawHelp"),
};

}  // namespace

void RegisterDataTypeConverters() {
  for (DataTypeConverter& converter : g_converters)
    if (!tavor::registry::Find("net.tavor.python.registry.converters", converter.id))
      (void)tavor::registry::Insert("net.tavor.python.registry.converters", converter.id, &converter);
}

}  // namespace qlx
