// qlx.bitmaps.BaseBitmap: a picture.

#include "bitmaps/bitmaps.h"
#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"

namespace qlx {
namespace {

PyObject* GetSize(BaseBitmap* self) { return Py_BuildValue("(ii)", self->GetBw(), self->GetBh()); }

PyMethodDef g_methods[] = {
    Method<Row<Gives>, &BaseBitmap::GetClone>("GetClone",
                                              "GetClone() -> qlx.bitmaps.BaseBitmap or None\n\nA copy."),
    Method<&BaseBitmap::CopyTo, "P!", "dst">(
        "CopyTo", "CopyTo(dst) -> bool\n\nMakes another picture a copy of this one."),
    Method<&GetSize>("GetSize",
                     "GetSize() -> (int, int)\n\nThe width and height in pixels; 0, 0 ahead of Init."),
    Method<&BaseBitmap::GetBw>("GetBw", "GetBw() -> int\n\nThe width in pixels."),
    Method<&BaseBitmap::GetBh>("GetBh", "GetBh() -> int\n\nThe height in pixels."),
    Method<&BaseBitmap::GetBt>("GetBt", "GetBt() -> int\n\nThe bits of a pixel."),
    Method<&BaseBitmap::Init, "ii|ii", "x", "y", "depth=24", "flags=0">(
        "Init",
        "Init(x, y, depth=24, flags=0) -> int\n\n"
        "Gives the picture a size in pixels and a depth of 1, 4, 8, 16, 24, 32, 36, 48, 64, 96 or 128 bits; it "
        "is\n"
        "black then. 1, or a negative number, and the picture stays as it was."),
    {},
};

}  // namespace

PyTypeObject g_BaseBitmapType = MakeType<AtomWrapper>({
    .name = "qlx.bitmaps.BaseBitmap",
    .doc = "Class to handle bitmaps.",
    .methods = g_methods,
    .create = Create<&BaseBitmap::Alloc, "">,
    .destroy = FreePicture,
    .compare = CompareHosts<BaseBitmap>,
});

namespace {
const TypeQueueEntry g_entry(g_BaseBitmapType);
}

PyObject* Present<BaseBitmap>::Wrap(BaseBitmap* host, bool owned) {
  return WrapBitmap(&g_BaseBitmapType, host, owned);
}

}  // namespace qlx
