// qlx.CustomIconSettings: how an element wants its icon, as it answers the message for that.

#include "kit/i_row.h"
#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/messages.h"
#include "scene/scene.h"
#include "values/values.h"

namespace qlx {
namespace {

struct IconSettingsRecord {
  PyObject ob_base;
  HostIconSettings data;
};

HostIconSettings& DataOf(PyObject* object) { return reinterpret_cast<IconSettingsRecord*>(object)->data; }

void Free(PyObject* self) {
  Filename::Adopt(DataOf(self).file);  // ends it
  FreeWrapper(g_wrapperTracker, self);
}

PyObject* GetFilename(PyObject* self, void*) {
  const auto& file = reinterpret_cast<const Filename&>(DataOf(self).file);
  return FilenameToPython(file);
}

PyObject* GetColorMode(PyObject* self, void*) { return PyLong_FromLong(DataOf(self).colorMode); }

PyObject* GetColor(PyObject* self, void*) { return Present<Vector>::Wrap(DataOf(self).color); }

PyGetSetDef g_attributes[] = {
    {"filename", GetFilename, nullptr, "The picture's file, a str; empty for the icon of the type.", nullptr},
    {"colorMode", GetColorMode, nullptr, "0 as the picture is, 1 in the object's display color, 2 in `color`.",
     nullptr},
    {"color", GetColor, nullptr, "A qlx.Vector, each part 0 to 1.", nullptr},
    {},
};

}  // namespace

PyTypeObject g_CustomIconSettingsType = MakeType<IconSettingsRecord>({
    .name = "qlx.CustomIconSettings",
    .doc = "The icon that an element wants, as message 1041699 answers it.",
    .create = RefuseInstance,
    .destroy = Free,
    .attributes = g_attributes,
});

PyObject* NewIconSettings(HostIconSettings& settings) {
  PyObject* object = AllocWrapper(g_wrapperTracker, &g_CustomIconSettingsType);
  if (object) DataOf(object) = std::exchange(settings, {});
  return object;
}

namespace {
const TypeQueueEntry g_entry(g_CustomIconSettingsType);
}

}  // namespace qlx
