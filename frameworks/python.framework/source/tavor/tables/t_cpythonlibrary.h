/* The library of a CPython interpreter.
 * interface CPythonLibrary net.tavor.python.interface.python.cpythonlibrary */
#ifndef TAVOR_T_CPYTHONLIBRARY_H
#define TAVOR_T_CPYTHONLIBRARY_H

#include "t_virtualmachine.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct CPythonLibrary CPythonLibrary;

/* A Python object, opaque on this side. References are counted as CPython counts them. */
typedef struct CPyObject CPyObject;

/* What GetDll tells. The library's file is a text with the lifetime of the library. */
typedef struct CPythonDll {
  void* handle;
  const char* file;
  uint32_t reserved;
  uint32_t major;
  uint32_t minor;
  uint32_t micro;
} CPythonDll;

enum SpecialPath {
  SPECIALPATH_TAVOR_MODULES = 0,
  SPECIALPATH_PREFS_PYTHON_GENERATED_DIRECTORY = 1,
  SPECIALPATH_PREFS_PYTHON_GLOBAL_LIBS = 2,
  SPECIALPATH_PREFS_PYTHON_LOCAL_LIBS = 3
};

enum PathHandle { PATHHANDLE_OVERWRITE = 0, PATHHANDLE_APPEND_AT_END = 1, PATHHANDLE_INSERT_AT_BEGINNING = 2 };

typedef struct CPythonLibraryInterface {
  TavorHead head;

  /* Finds the library and makes it global, so that extension modules resolve against it.
   * The interpreter does not start yet. A second call is a success with nothing done.
   * owner   the caller, of the error text
   * thread  main
   * waits   disk
   * since   23100
   * fails   error */
  HostResult (*Init)(CPythonLibrary* self);

  /* Makes the module's waiting types ready. Lock held.
   * owner   the caller, of the error text
   * thread  any
   * waits   no
   * since   23100
   * fails   error */
  HostResult (*InitTypes)(CPythonLibrary* self);

  /* Imports the package "qlx". No Python error is pending afterwards. Lock held.
   * owner   the caller, of the error text
   * thread  any
   * waits   disk
   * since   23100
   * fails   error */
  HostResult (*InitBuiltinModules)(CPythonLibrary* self);

  /* Starts the interpreter from the settings that a virtual machine takes, or with the usual
   * ones for null; the calling thread holds the lock.
   * owner   the caller, of the error text
   * thread  main
   * waits   disk
   * since   23100
   * fails   error */
  HostResult (*CPy_Initialize)(CPythonLibrary* self, const DataDictionary* settings);

  /* Ends the interpreter. Lock held; it is gone afterwards.
   * owner   -
   * thread  main
   * waits   yes
   * since   23100
   * fails   nothing */
  void (*CPy_Finalize)(CPythonLibrary* self);

  /* Forgets the special paths. The library itself stays loaded, as extension modules need.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Free)(CPythonLibrary* self);

  /* The library's file and version; all zero before Init.
   * owner   the library
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  const CPythonDll* (*GetDll)(CPythonLibrary* self);

  /* Whether the interpreter runs. No lock needed.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*CPy_IsInitialized)(CPythonLibrary* self);

  /* Takes the interpreter's lock; the state goes to CPyGilState_Release on the same thread.
   * owner   -
   * thread  any
   * waits   for the interpreter's lock
   * since   23100
   * fails   -1 */
  int32_t (*CPyGilState_Ensure)(CPythonLibrary* self);

  /* Gives the interpreter's lock back.
   * owner   -
   * thread  that of the matching CPyGilState_Ensure
   * waits   no
   * since   23100
   * fails   nothing */
  void (*CPyGilState_Release)(CPythonLibrary* self, int32_t state);

  /* Prints the pending error; a pending exit request asks the host to end instead. No error
   * is pending afterwards. Lock held.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*CPyErr_Print)(CPythonLibrary* self);

  /* Clears the pending error. Lock held.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*CPyErr_Clear)(CPythonLibrary* self);

  /* The type of the pending error. Lock held.
   * owner   the interpreter
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  CPyObject* (*CPyErr_Occurred)(CPythonLibrary* self);

  /* Changes `sys.path` by a PathHandle. Paths that are in the list move. Lock held.
   * owner   the caller, of the error text
   * thread  any
   * waits   no
   * since   23100
   * fails   error */
  HostResult (*CPySys_SetPath)(CPythonLibrary* self, const HostFilename* paths, int32_t count, int32_t handle);

  /* Imports a module. Lock held; on failure the Python error is pending.
   * owner   the caller, of the reference
   * thread  any
   * waits   disk
   * since   23100
   * fails   null */
  CPyObject* (*CPyImport_ImportModule)(CPythonLibrary* self, const char* name);

  /* The dictionary of a module. Lock held.
   * owner   the module
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  CPyObject* (*CPyModule_GetDict)(CPythonLibrary* self, CPyObject* module);

  /* An entry of a dictionary. Lock held; no Python error for a missing name.
   * owner   the dictionary
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  CPyObject* (*CPyDict_GetItemString)(CPythonLibrary* self, CPyObject* dictionary, const char* name);

  /* Whether the object is an integer. Lock held.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*CPyLong_Check)(CPythonLibrary* self, CPyObject* object);

  /* One more reference to an object. Lock held; null is allowed.
   * owner   the caller, of the reference
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*CPy_IncRef)(CPythonLibrary* self, CPyObject* object);

  /* One reference less. Lock held; null is allowed.
   * owner   the interpreter
   * thread  any
   * waits   as destructors of the object do
   * since   23100
   * fails   nothing */
  void (*CPy_DecRef)(CPythonLibrary* self, CPyObject* object);

  /* One SpecialPath.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*GetSpecialPath)(CPythonLibrary* self, int32_t which);

  /* Sets one SpecialPath.
   * owner   -
   * thread  main
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*RegisterSpecialPath)(CPythonLibrary* self, int32_t which, const HostFilename* path);
} CPythonLibraryInterface;

#ifdef __cplusplus
}
#endif
#endif
