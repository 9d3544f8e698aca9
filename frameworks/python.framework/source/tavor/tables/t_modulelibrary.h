/* The table that the module publishes to other plug-ins of the host, by
 * InstallLibrary(MODULE_LIBRARY_ID, MODULE_LIBRARY_VERSION, table).
 *
 * It has 176 words. A word whose service the module does not offer is null: test it before
 * a call. Services take the interpreter's lock themselves, and leave no error of Python
 * pending. Where Python can't be used they answer as they do for a failure. */
#ifndef TAVOR_T_MODULELIBRARY_H
#define TAVOR_T_MODULELIBRARY_H

#include "../../../../kelvar.framework/source/tables/t_document.h"
#include "../../../../kelvar.framework/source/tables/t_gedata.h"
#include "../../../../kelvar.framework/source/tables/t_resource.h"
#include "../../../../kelvar.framework/source/tables/t_thread.h"
#include "t_cpythonlibrary.h"

#ifdef __cplusplus
extern "C" {
#endif

#define MODULE_LIBRARY_ID 1025707
#define MODULE_LIBRARY_VERSION 1000
#define MODULE_LIBRARY_WORDS 176

/* The private globals of a script. It is empty, or live from Init to Free. */
typedef struct ModuleScriptScope ModuleScriptScope;

/* What becomes of the error of a text that does not compile. */
enum ScriptSyntaxError { SCRIPT_SYNTAX_ERROR_CLEAR = 0, SCRIPT_SYNTAX_ERROR_PRINT = 1 };

/* The operations of a script scope. Any thread; a scope has no lock but the interpreter's. A
 * script may free or destroy its own scope while it runs. Names and sources are UTF-8, null is no
 * name. What answers truth answers 0 on failure: an empty scope takes no values, and nothing is
 * bound then. */
typedef struct ScriptScopeTable {
  /* word 16: a new empty scope, or null. The caller's, until Destroy. */
  ModuleScriptScope* (*Create)(void);
  /* word 17: frees the scope and ends it; null is allowed. Also after Python's end. */
  void (*Destroy)(ModuleScriptScope* self);
  /* word 18: makes an empty scope live, with `__builtins__` and `__name__`. A live one loses
   * its names without a release: Reset is for these. */
  int32_t (*Init)(ModuleScriptScope* self);
  /* word 19: Free and Init. */
  int32_t (*Reset)(ModuleScriptScope* self);
  /* word 20: empties the scope; harmless for an empty one. */
  void (*Free)(ModuleScriptScope* self);
  /* word 21: whether a name is bound. */
  int32_t (*Contains)(ModuleScriptScope* self, const HostString* name);
  /* word 22: what a name is bound to, borrowed, or null. The caller holds the lock by
   * CPyGilState_Ensure of the library, from the call to its last use of the object. */
  CPyObject* (*Get)(ModuleScriptScope* self, const HostString* name);
  /* word 23: binds an int. */
  int32_t (*SetInt)(ModuleScriptScope* self, const HostString* name, int32_t value);
  /* word 24: binds None. */
  int32_t (*SetNone)(ModuleScriptScope* self, const HostString* name);
  /* word 25: binds the Python form of a value. */
  int32_t (*SetData)(ModuleScriptScope* self, const HostString* name, const HostGeData* data);
  /* word 26: binds an element of the scene; null gives 0. With `owned` the script takes the
   * element over, also where it can't be bound, unless Python can't be used at all; elements
   * that are part of the scene are not owned. */
  int32_t (*SetNode)(ModuleScriptScope* self, const HostString* name, QLXAtom* node, int32_t owned);
  /* word 27: binds a path as a str. */
  int32_t (*SetFilename)(ModuleScriptScope* self, const HostString* name, const HostFilename* file);
  /* word 28: binds a Python object, which the caller keeps; null gives 0. */
  int32_t (*SetObject)(ModuleScriptScope* self, const HostString* name, CPyObject* object);
  /* word 29: imports the package and binds it to `qlx`. */
  int32_t (*ImportPackage)(ModuleScriptScope* self);
  /* word 30: compiles and runs a text; tracebacks show `fileName` as it is. `startMode` is 257
   * for a whole script. What the script raises is printed by PyErr_Print, where a SystemExit
   * ends the interpreter and the process; a text that does not compile is dealt with as a
   * ScriptSyntaxError says. Waits. */
  int32_t (*Run)(ModuleScriptScope* self, const HostString* source, const HostString* fileName,
                 int32_t startMode, int32_t syntaxError);
  /* word 31: whether a statement of a console is complete: 1, 0 when another line must come,
   * -1 when it is wrong. */
  int32_t (*IsComplete)(const HostString* source);
  /* word 32: runs a text in a scope that ends with the call, with `doc`, `op` and `tp` of the
   * active document. Tracebacks show `name` in quotes; `file` becomes `__file__` unless it is
   * null. Errors are printed. Waits. */
  int32_t (*ExecuteText)(const HostString* source, const HostString* name, const HostFilename* file);
  /* word 33: whether the calling thread is in the script of a scene node. */
  int32_t (*IsExecuting)(void);
  /* word 34: binds a resource; null gives 0. With `owned` the script takes it over and closes it
   * on whatever thread it ends there, also where it can't be bound, unless Python can't be used at all. */
  int32_t (*SetResource)(ModuleScriptScope* self, const HostString* name, GeResource* resource, int32_t owned);
  /* word 35: binds a handle to a thread, which dies with it; null gives 0. */
  int32_t (*SetThread)(ModuleScriptScope* self, const HostString* name, BaseThread* thread);

  void* reserved[12]; /* words 36 to 47 */
} ScriptScopeTable;

/* Host values to Python objects and back. The caller holds the lock by CPyGilState_Ensure of
 * the library, as long as it uses the objects. */
typedef struct ConversionTable {
  /* word 48: the Python form of a value: a new reference, or null. Links are resolved in the
   * document, which may be null. */
  CPyObject* (*GeDataToPython)(const HostGeData* data, BaseDocument* document);
  /* word 49: replaces `data`, a valid value, by the object's. A value without a type takes
   * the object's natural one, a typed one only what fits it: 0 otherwise, and it stays. */
  int32_t (*GeDataFromPython)(CPyObject* object, HostGeData* data);

  void* reserved[46]; /* words 50 to 95 */
} ConversionTable;

typedef struct ModuleLibraryTable {
  uint64_t bytes;   /* word 0: the size of this record */
  uint64_t version; /* word 1: MODULE_LIBRARY_VERSION */

  /* word 2: whether Python can be used, 0 or 1. Any thread. */
  int32_t (*IsPythonRunning)(void);
  /* word 3: the virtual machine, borrowed, or null. Any thread. */
  VirtualMachine* (*GetVirtualMachine)(void);
  /* word 4: the interpreter's library, borrowed, or null. Any thread. */
  CPythonLibrary* (*GetLibrary)(void);
  /* word 5: compiles and runs a text in a scope that ends with the call. `name` is what
   * tracebacks show as the file. Errors are printed; 1 on success. Any thread; waits. */
  int32_t (*RunText)(const HostString* source, const HostString* name);
  /* word 6: runs a script file like ExecuteText, with its path as name and as `__file__`. 0
   * also where it can't be read, which is logged. Any thread; waits. */
  int32_t (*ExecuteScriptFile)(const HostFilename* file);

  void* reservedServices[9];    /* words 7 to 15 */
  ScriptScopeTable scriptScope; /* words 16 to 47: operations of a script scope */
  ConversionTable conversion;   /* words 48 to 95: host values to Python objects and back */
  void* dynamicRegistry[16];    /* words 96 to 111: dynamic modules and classes */
  void* reserved[64];           /* words 112 to 175 */
} ModuleLibraryTable;

#ifdef __cplusplus
}
#endif
#endif
