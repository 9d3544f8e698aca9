/* A virtual machine: an interpreter of a scripting language.
 * interface VirtualMachine net.tavor.python.interface.virtualmachine */
#ifndef TAVOR_T_VIRTUALMACHINE_H
#define TAVOR_T_VIRTUALMACHINE_H

#include "../../../../core.framework/source/tavor/tables/t_datadictionary.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct VirtualMachine VirtualMachine;
typedef struct VirtualMachineScope VirtualMachineScope;
typedef struct TavorObject TavorObject;

/* Keys of the dictionary that Init takes. */
#define CPYTHON_ADDITIONAL_SYS_PATH "net.tavor.python.vminit.additionalsyspath"
#define CPYTHON_INTERPRETERFLAGS "net.tavor.python.vminit.interpreterflags"
#define CPYTHON_WARNING_OPTIONS "net.tavor.python.vminit.warningoptions"   /* a line each */
#define CPYTHON_EXTENDED_OPTIONS "net.tavor.python.vminit.extendedoptions" /* a line each */
#define CPYTHON_SUBINTERPRETER "net.tavor.python.vminit.subinterpreter"
#define PYPY_EXECUTABLE "net.tavor.python.vminit.pypyexecutable"

/* Keys of the settings of a scope. */
#define MOVE_ERRORS_TO_RESULT "net.tavor.python.vmsettings.moveerrorstoresult"
#define USE_AUTO_GIL "net.tavor.python.vmsettings.useautogil"

enum DefaultRuntime {
  DEFAULTRUNTIME_NONE = 0,
  DEFAULTRUNTIME_DEBUG_37_VS2015 = 1,
  DEFAULTRUNTIME_RELEASE_37_VS2015 = 2,
  DEFAULTRUNTIME_DEBUG_37 = 3,
  DEFAULTRUNTIME_RELEASE_37 = 4,
  DEFAULTRUNTIME_DEFAULT_37 = 5,
  DEFAULTRUNTIME_DEFAULT = 6
};

enum ErrorHandling { ERRORHANDLING_PRINT = 0, ERRORHANDLING_CLEAR = 1, ERRORHANDLING_REDIRECT = 2 };

enum StartOperation {
  PYSTARTOPERATION_NONE = 0,
  PYSTARTOPERATION_EXECUTE_CODE = 1,
  PYSTARTOPERATION_EXECUTE_MODULE = 2,
  PYSTARTOPERATION_EXECUTE_FILE = 3,
  PYSTARTOPERATION_VERSION = 4
};

typedef struct VirtualMachineInterface {
  TavorHead head;

  /* One more reference to the machine.
   * owner   the caller, until Release
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Retain)(VirtualMachine* self);

  /* One reference less; the last one ends the machine.
   * owner   the machine
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Release)(VirtualMachine* self);

  /* Starts the interpreter from a dictionary of settings. On success no thread holds the
   * interpreter's lock. A machine starts once in a process.
   * owner   the caller, of the error text
   * thread  main
   * waits   yes
   * since   23100
   * fails   error */
  HostResult (*Init)(VirtualMachine* self, const DataDictionary* settings, int32_t runtime);

  /* Ends the interpreter. Called with no lock held; harmless when it does not run.
   * owner   -
   * thread  main
   * waits   yes
   * since   23100
   * fails   nothing */
  void (*Free)(VirtualMachine* self);

  /* A new scope with globals of its own.
   * owner   the caller, until Release
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  VirtualMachineScope* (*CreateScope)(VirtualMachine* self);

  /* The interpreter's name, such as "Python".
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetName)(VirtualMachine* self);

  /* The interpreter's version, such as "3.7.16".
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetVersion)(VirtualMachine* self);

  /* The interpreter's copyright.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetCopyright)(VirtualMachine* self);

  /* The compiler that built the interpreter.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetCompiler)(VirtualMachine* self);

  /* The interpreter's build number and date.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetBuildInfo)(VirtualMachine* self);

  /* Reads, runs and prints statements from the console until its end.
   * owner   the caller, of the error text
   * thread  main
   * waits   yes
   * since   23100
   * fails   error */
  HostResult (*EnterInteractiveMode)(VirtualMachine* self);

  /* Runs a text in the module `__main__`. Errors of the text are printed.
   * owner   the caller, of the error text
   * thread  main
   * waits   yes
   * since   23100
   * fails   error */
  HostResult (*ExecuteCode)(VirtualMachine* self, const HostString* code);

  /* Runs a file in the module `__main__`. Errors of the file are printed.
   * owner   the caller, of the error text
   * thread  main
   * waits   yes
   * since   23100
   * fails   error */
  HostResult (*ExecuteFile)(VirtualMachine* self, const HostFilename* file);

  /* Runs a module as a script. Errors of the module are printed.
   * owner   the caller, of the error text
   * thread  main
   * waits   yes
   * since   23100
   * fails   error */
  HostResult (*ExecuteModule)(VirtualMachine* self, const HostString* name);

  /* A line about the machine for people.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetDocumentString)(VirtualMachine* self);

  /* The interpreter's library. An object of some interface; what it implements is told by
   * the identity in its table.
   * owner   the machine
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  TavorObject* (*GetLibraryRef)(VirtualMachine* self);

  /* The files of the interpreter libraries that this machine has loaded, a line each.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetAllAvailableVirtualMachineLibraries)(VirtualMachine* self);
} VirtualMachineInterface;

/* What a machine registers itself with: an object of the registry
 * "net.tavor.python.registry.virtualmachines". */
typedef struct VirtualMachineClass {
  uint32_t size;
  uint32_t reserved;
  VirtualMachine* (*Create)(void); /* one reference, owned by the caller, or null */
} VirtualMachineClass;

#ifdef __cplusplus
}
#endif
#endif
