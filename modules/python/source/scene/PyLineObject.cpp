// qlx.LineObject: an object with lines.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/geometry.h"

namespace qlx {
namespace {

PyMethodDef g_methods[] = {
    Method<Row<Gives>, &LineObject::Triangulate, "f", "regular">(
        "Triangulate",
        "Triangulate(regular) -> qlx.LineObject or None\n\n"
        "The lines of triangles between the lines, which lie about in a plane; above 0 with points inside, so "
        "that sides are about that long. None when there is no such thing."),
    Method<&LineObject::GetSegmentCount>("GetSegmentCount",
                                         "GetSegmentCount() -> int\n\nHow many segments there are."),
    {},
};

}  // namespace

PyTypeObject g_LineObjectType = MakeType<AtomWrapper>({
    .name = "qlx.LineObject",
    .doc = "LineObject(pcnt, scnt)\n\nAn object with lines; a new one has that many points and segments, all "
           "zero.",
    .base = &g_PointObjectType,
    .methods = g_methods,
    .create = CreateKind<&LineObject::Alloc, 5137, "ii", "pcnt", "scnt">,
    .destroy = FreeElement,
});

namespace {
const TypeQueueEntry g_entry(g_LineObjectType);
}

}  // namespace qlx
