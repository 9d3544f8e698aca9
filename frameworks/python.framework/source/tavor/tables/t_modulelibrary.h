/* The table that the module publishes to other plug-ins of the host, by
 * InstallLibrary(MODULE_LIBRARY_ID, MODULE_LIBRARY_VERSION, table).
 *
 * It has 176 words. A word whose service the module does not offer is null: test it before
 * a call. Services take the interpreter's lock themselves. */
#ifndef TAVOR_T_MODULELIBRARY_H
#define TAVOR_T_MODULELIBRARY_H

#include "t_cpythonlibrary.h"

#ifdef __cplusplus
extern "C" {
#endif

#define MODULE_LIBRARY_ID 1025707
#define MODULE_LIBRARY_VERSION 1000
#define MODULE_LIBRARY_WORDS 176

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
  /* word 6: runs a script file like RunText, with `__file__` set. Any thread; waits. */
  int32_t (*ExecuteScriptFile)(const HostFilename* file);

  void* reservedServices[9]; /* words 7 to 15 */
  void* scriptScope[32];     /* words 16 to 47: operations of a script scope */
  void* conversion[48];      /* words 48 to 95: host values to Python objects and back */
  void* dynamicRegistry[16]; /* words 96 to 111: dynamic modules and classes */
  void* reserved[64];        /* words 112 to 175 */
} ModuleLibraryTable;

#ifdef __cplusplus
}
#endif
#endif
