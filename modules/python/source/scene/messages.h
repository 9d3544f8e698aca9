// What scripts send to elements.
#ifndef SCENE_MESSAGES_H
#define SCENE_MESSAGES_H

#include <Python.h>

#include "kelvar.framework/source/tables/t_messages.h"
#include "kit/i_wrapper.h"

namespace qlx {

// A new reference; null with an exception. The wrapper is alive; its object may not be so behind the call.
PyObject* Message(AtomWrapper* self, int32_t type, PyObject* data);
PyObject* MultiMessage(AtomWrapper* self, int32_t flags, int32_t type, PyObject* data);

// A qlx.CustomIconSettings, which takes over what the settings own; null with an exception.
PyObject* NewIconSettings(HostIconSettings& settings);

}  // namespace qlx

#endif
