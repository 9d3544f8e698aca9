/* The application that the process runs as.
 * service   application net.tavor.interface.application */
#ifndef TAVOR_T_APPLICATION_H
#define TAVOR_T_APPLICATION_H

#include "t_tavor.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct TavorApplicationService {
  TavorHead head;

  /* The identity, "net.tavor.application.python" for the command-line application.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetIdentity)(void);

  /* The number of command-line arguments, the program's name among them.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetArgumentCount)(void);

  /* One command-line argument; 0 is the program's name. The text has the bytes that the
   * process received, which need not be UTF-8.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostString (*GetArgument)(int32_t index);

  /* The file of the running program, with its full path.
   * owner   the caller
   * thread  any
   * waits   no
   * since   23100
   * fails   empty */
  HostFilename (*GetExecutable)(void);

  /* Sets the exit code with which the process ends; a negative one ends it by the signal of
   * that number.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetExitCode)(int32_t code);

  /* A configuration variable such as "g_console"; `fallback` when it is not known.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   fallback */
  int32_t (*GetConfigurationBool)(const char* name, int32_t fallback);

  /* Sets a configuration variable for the rest of the process.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*SetConfigurationBool)(const char* name, int32_t value);

  /* Shows version information in the host's list of modules. A second entry under the same
   * id replaces the first.
   * owner   the host, of its copies
   * thread  main
   * waits   no
   * since   23100
   * fails   error */
  HostResult (*RegisterModuleInfo)(const char* id, const HostString* shortName, const HostString* longName,
                                   const HostString* version);

  /* Whether a console can take part in a conversation.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*ConsoleIsAvailable)(void);

  /* The year of today's date, such as 2024.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*GetCurrentYear)(void);
} TavorApplicationService;

#ifdef __cplusplus
}
#endif
#endif
