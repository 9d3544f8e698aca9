// Python plug-ins: files, registrations, commands.
#ifndef PLUGINS_PLUGINS_H
#define PLUGINS_PLUGINS_H

#include <Python.h>

#include <cstdint>

#include "kelvar/resource.h"
#include "kit/i_present.h"
#include "tavor/error.h"

namespace qlx {

extern PyTypeObject g_BaseDataType;
extern PyTypeObject g_GeResourceType;

// The wrapper of a resource that it does not own is dead from the moment on that the host closes it.
template <>
struct Present<GeResource> {
  static PyTypeObject& Type() { return g_GeResourceType; }
  static constexpr bool kResolvedFirst = false;
  static bool Get(PyObject* object, GeResource*& host);
  static PyObject* Wrap(GeResource* host,
                        bool owned);  // with `owned` it closes the resource, also where it fails
};

// Plug-in files. Lock held in all but the forward, which takes it itself.
tavor::Error LoadAllPlugins(int32_t state);
void ForwardPluginMessage(int32_t id, void* data);
void DropPluginObjects();
void FreeAllPlugins();

// Classes that plug-ins registered: each drops its Python object.
void DropRegisteredClasses();

void RegisterScriptCommands();
void RegisterSourceProtector();
void RegisterScriptManager();

}  // namespace qlx

#endif
