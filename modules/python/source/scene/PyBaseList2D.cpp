// qlx.BaseList2D: an element with a name and parameters.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {
namespace {

PyMethodDef g_methods[] = {
    Method<&BaseList2D::GetName>("GetName", "GetName() -> str\n\nThe name."),
    Method<&BaseList2D::SetName, "$", "name">(
        "SetName", "SetName(name) -> None\n\nSets the name; any object, by its text."),
    Method<Row<PartOfSelf>, &BaseList2D::GetDataInstance>(
        "GetDataInstance",
        "GetDataInstance() -> qlx.BaseContainer or None\n\n"
        "The object's own container: a change of it is a change of the object. It dies with the object."),
    {},
};

}  // namespace

PyTypeObject g_BaseList2DType = MakeType<AtomWrapper>({
    .name = "qlx.BaseList2D",
    .doc = "BaseList2D class.",
    .base = &g_GeListNodeType,
    .methods = g_methods,
    .create = Create<&BaseList2D::Alloc, "i", "type">,
    .destroy = FreeElement,
});

namespace {
const TypeQueueEntry g_entry(g_BaseList2DType);
}

}  // namespace qlx
