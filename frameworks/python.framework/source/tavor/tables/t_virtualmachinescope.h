/* A scope of a virtual machine: a text with globals that live between its runs.
 * interface VirtualMachineScope net.tavor.python.interface.virtualmachinescope */
#ifndef TAVOR_T_VIRTUALMACHINESCOPE_H
#define TAVOR_T_VIRTUALMACHINESCOPE_H

#include "t_virtualmachine.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct VirtualMachineScopeInterface {
  TavorHead head;

  /* One more reference to the scope.
   * owner   the caller, until Release
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Retain)(VirtualMachineScope* self);

  /* One reference less; the last one frees the globals.
   * owner   the scope
   * thread  any
   * waits   for the interpreter's lock
   * since   23100
   * fails   nothing */
  void (*Release)(VirtualMachineScope* self);

  /* Compiles `code`; `name` is what tracebacks show as its file. A compile error is treated
   * by `errorHandling`. Settings may be null.
   * owner   the caller, of the error text
   * thread  any
   * waits   for the interpreter's lock
   * since   23100
   * fails   error */
  HostResult (*Init)(VirtualMachineScope* self, const HostString* name, const HostString* code,
                     int32_t errorHandling, const DataDictionary* settings);

  /* Binds a name to a text.
   * owner   the caller, of the error text
   * thread  any
   * waits   for the interpreter's lock
   * since   23100
   * fails   error */
  HostResult (*Add)(VirtualMachineScope* self, const HostString* name, const HostString* value);

  /* The text of what a name is bound to, as the language's `str` shows it. An unbound name
   * is an error.
   * owner   the caller, of the text and the error text
   * thread  any
   * waits   for the interpreter's lock
   * since   23100
   * fails   error */
  HostResult (*Get)(VirtualMachineScope* self, const HostString* name, HostString* result);

  /* Runs the text once more with the globals as they are. The error's text is the last line
   * of what a traceback shows; printing is up to the error handling.
   * owner   the caller, of the error text
   * thread  any
   * waits   yes
   * since   23100
   * fails   error */
  HostResult (*Execute)(VirtualMachineScope* self);

  /* Calls a function that the text has defined, with no arguments; `result` receives the
   * text of what it returned and may be null.
   * owner   the caller, of the text and the error text
   * thread  any
   * waits   yes
   * since   23100
   * fails   error */
  HostResult (*PrivateInvoke)(VirtualMachineScope* self, const HostString* function, HostString* result);

  /* The error handling that Init set.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*ErrorHandling)(VirtualMachineScope* self);
} VirtualMachineScopeInterface;

#ifdef __cplusplus
}
#endif
#endif
