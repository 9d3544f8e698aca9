/* Sizes and places of the records that cross the boundary, and of their members. Compiles as
 * C99 and as C++; a host that was built long ago relies on every line. */
#ifndef VALUE_LAYOUT_H
#define VALUE_LAYOUT_H

#include "boundary/layout.h"
#include "python.framework/source/tavor/tables/t_converter.h"
#include "python.framework/source/tavor/tables/t_modulelibrary.h"

/* C99 has no assertion of its own that a compiler evaluates. */
#define SIZE(type, bytes) typedef char size_of_##type[sizeof(type) == (bytes) ? 1 : -1]
#define PLACE(type, member, byte) \
  typedef char place_of_##type##_##member[offsetof(type, member) == (byte) ? 1 : -1]
#define VALUE(constant, number) typedef char value_of_##constant[(constant) == (number) ? 1 : -1]

SIZE(HostString, 8);
SIZE(HostFilename, 8);

SIZE(HostDescID, 16);
PLACE(HostDescID, level, 0);
PLACE(HostDescID, depth, 8);

SIZE(CPolygon, 16);
PLACE(CPolygon, b, 4);
PLACE(CPolygon, d, 12);
SIZE(HostSegment, 8);
PLACE(HostSegment, closed, 4);
SIZE(HostPolyInfo, 48);
PLACE(HostPolyInfo, edge, 16);
PLACE(HostPolyInfo, mark, 32);

SIZE(HostResult, 24);
PLACE(HostResult, code, 0);
PLACE(HostResult, line, 4);
PLACE(HostResult, file, 8);
PLACE(HostResult, text, 16);

SIZE(HostGroup, 8);
PLACE(HostGroup, size, 0);

SIZE(HostTables, 8 + 96 * 8);
PLACE(HostTables, version, 0);
PLACE(HostTables, groupCount, 4);
PLACE(HostTables, group, 8);
VALUE(HOST_VERSION_MINIMUM, 23100);
VALUE(HOST_GROUP_GENERAL, 1);
VALUE(HOST_GROUP_STRING, 5);
VALUE(HOST_GROUP_FILENAME, 9);
VALUE(HOST_GROUP_RESOURCE, 15);

PLACE(HostStringGroup, symbolCache, 8);

SIZE(CpuYieldRecord, 12);
PLACE(CpuYieldRecord, count, 0);
PLACE(CpuYieldRecord, step, 4);
PLACE(CpuYieldRecord, address, 8);

SIZE(ModuleInitialization, 24);
PLACE(ModuleInitialization, size, 0);
PLACE(ModuleInitialization, BringUp, 8);
PLACE(ModuleInitialization, Shutdown, 16);

SIZE(PluginRecord, 48);
PLACE(PluginRecord, size, 0);
PLACE(PluginRecord, kind, 4);
PLACE(PluginRecord, id, 8);
PLACE(PluginRecord, info, 12);
PLACE(PluginRecord, name, 16);
PLACE(PluginRecord, self, 24);
PLACE(PluginRecord, Message, 32);
PLACE(PluginRecord, Free, 40);

SIZE(CommandRecord, 72);
PLACE(CommandRecord, base, 0);
PLACE(CommandRecord, help, 48);
PLACE(CommandRecord, Execute, 56);
PLACE(CommandRecord, GetState, 64);

SIZE(TavorHead, 16);
PLACE(TavorHead, size, 0);
PLACE(TavorHead, version, 4);
PLACE(TavorHead, identity, 8);

SIZE(TavorRecord, 24);
PLACE(TavorRecord, size, 0);
PLACE(TavorRecord, version, 4);
PLACE(TavorRecord, ResolveService, 8);
PLACE(TavorRecord, yieldFirst, 16);

SIZE(VirtualMachineClass, 16);
PLACE(VirtualMachineClass, size, 0);
PLACE(VirtualMachineClass, Create, 8);

SIZE(DataTypeConverter, 32);
PLACE(DataTypeConverter, size, 0);
PLACE(DataTypeConverter, id, 8);
PLACE(DataTypeConverter, ToPython, 16);
PLACE(DataTypeConverter, FromPython, 24);

/* The version is in the last three fields. */
SIZE(CPythonDll, 32);
PLACE(CPythonDll, handle, 0);
PLACE(CPythonDll, file, 8);
PLACE(CPythonDll, major, 20);
PLACE(CPythonDll, minor, 24);
PLACE(CPythonDll, micro, 28);

SIZE(ScriptScopeTable, 32 * 8);
PLACE(ScriptScopeTable, Create, 0 * 8);
PLACE(ScriptScopeTable, Destroy, 1 * 8);
PLACE(ScriptScopeTable, Init, 2 * 8);
PLACE(ScriptScopeTable, Reset, 3 * 8);
PLACE(ScriptScopeTable, Free, 4 * 8);
PLACE(ScriptScopeTable, Contains, 5 * 8);
PLACE(ScriptScopeTable, Get, 6 * 8);
PLACE(ScriptScopeTable, SetInt, 7 * 8);
PLACE(ScriptScopeTable, SetNone, 8 * 8);
PLACE(ScriptScopeTable, SetData, 9 * 8);
PLACE(ScriptScopeTable, SetNode, 10 * 8);
PLACE(ScriptScopeTable, SetFilename, 11 * 8);
PLACE(ScriptScopeTable, SetObject, 12 * 8);
PLACE(ScriptScopeTable, ImportPackage, 13 * 8);
PLACE(ScriptScopeTable, Run, 14 * 8);
PLACE(ScriptScopeTable, IsComplete, 15 * 8);
PLACE(ScriptScopeTable, ExecuteText, 16 * 8);
PLACE(ScriptScopeTable, IsExecuting, 17 * 8);
PLACE(ScriptScopeTable, SetResource, 18 * 8);
PLACE(ScriptScopeTable, SetThread, 19 * 8);
SIZE(ConversionTable, 48 * 8);
PLACE(ConversionTable, GeDataToPython, 0 * 8);
PLACE(ConversionTable, GeDataFromPython, 1 * 8);

VALUE(MODULE_LIBRARY_ID, 1025707);
VALUE(MODULE_LIBRARY_VERSION, 1000);
SIZE(ModuleLibraryTable, MODULE_LIBRARY_WORDS * 8);
VALUE(MODULE_LIBRARY_WORDS, 176);
PLACE(ModuleLibraryTable, bytes, 0);
PLACE(ModuleLibraryTable, version, 1 * 8);
PLACE(ModuleLibraryTable, IsPythonRunning, 2 * 8);
PLACE(ModuleLibraryTable, GetVirtualMachine, 3 * 8);
PLACE(ModuleLibraryTable, GetLibrary, 4 * 8);
PLACE(ModuleLibraryTable, RunText, 5 * 8);
PLACE(ModuleLibraryTable, ExecuteScriptFile, 6 * 8);
PLACE(ModuleLibraryTable, reservedServices, 7 * 8);
PLACE(ModuleLibraryTable, scriptScope, 16 * 8);
PLACE(ModuleLibraryTable, conversion, 48 * 8);
PLACE(ModuleLibraryTable, dynamicRegistry, 96 * 8);
PLACE(ModuleLibraryTable, reserved, 112 * 8);

#endif
