/* Loggers with outputs and levels.
 * service   logger net.tavor.interface.logger */
#ifndef TAVOR_T_LOGGER_H
#define TAVOR_T_LOGGER_H

#include "t_tavor.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct Logger Logger;

/* Where a logger's texts go. */
enum LoggerOutput {
  LOGGER_OUTPUT_DEFAULT = 1,    /* the host's console */
  LOGGER_OUTPUT_APPLICATION = 2 /* the streams of the process */
};

/* Levels of a text; an output shows the texts up to the level it was added with. */
enum LoggerLevel {
  LOGGER_LEVEL_FATAL = 1,
  LOGGER_LEVEL_CRITICAL = 2,
  LOGGER_LEVEL_ERROR = 4,
  LOGGER_LEVEL_WARNING = 6,
  LOGGER_LEVEL_OUTPUT = 9,
  LOGGER_LEVEL_STREAM_ERROR = 12,
  LOGGER_LEVEL_ALL = 14
};

/* Whom a text is for. */
enum LoggerTarget { LOGGER_TARGET_USER = 8, LOGGER_TARGET_DEVELOPER = 16 };

typedef struct TavorLoggerService {
  TavorHead head;

  /* The logger with that id, made with no outputs when it does not exist.
   * owner   the host, until Remove
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  Logger* (*Create)(const char* id, const HostString* name);

  /* The logger that always exists. Its texts go to the default output.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   null */
  Logger* (*GetDefault)(void);

  /* Adds a LoggerOutput that shows texts up to `level`.
   * owner   the caller, of the error text
   * thread  any
   * waits   no
   * since   23100
   * fails   error */
  HostResult (*AddOutput)(Logger* logger, int32_t output, int32_t level);

  /* Writes a text as it is, with no line end added. `file` and `line` tell where in the
   * source it comes from; `file` may be null. 0, or the system's number of the error that kept
   * an output from taking the text, such as EPIPE.
   * owner   -
   * thread  any
   * waits   until the text is handed over
   * since   23100
   * fails   0 */
  int32_t (*Write)(Logger* logger, int32_t target, int32_t level, const HostString* text, const char* file,
                   int32_t line);

  /* Removes a logger; the pointer is not used afterwards.
   * owner   the host
   * thread  any
   * waits   no
   * since   23100
   * fails   nothing */
  void (*Remove)(Logger* logger);
} TavorLoggerService;

#ifdef __cplusplus
}
#endif
#endif
