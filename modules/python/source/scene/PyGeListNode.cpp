// qlx.GeListNode: an atom in a list of the scene.

#include "kit/i_type.h"
#include "kit/i_typequeue.h"
#include "scene/scene.h"

namespace qlx {

// It owns no element, also where the flag says so: only what derives from it destroys one.
PyTypeObject g_GeListNodeType = MakeType<AtomWrapper>({
    .name = "qlx.GeListNode",
    .doc = "An atom in a 4D list.",
    .base = &g_QLXAtomType,
    .create = RefuseInstance,
    .destroy = FreeLinkOnly,
});

namespace {
const TypeQueueEntry g_entry(g_GeListNodeType);
}

}  // namespace qlx
