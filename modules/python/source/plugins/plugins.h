// Python plug-ins: files, registrations, commands.
#ifndef PLUGINS_PLUGINS_H
#define PLUGINS_PLUGINS_H

#include <Python.h>

#include <cstdint>

#include "tavor/error.h"

namespace qlx {

extern PyTypeObject g_BaseDataType;

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
