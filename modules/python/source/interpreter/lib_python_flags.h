// The interpreter flags: one word that the command line may change before the start.
#ifndef INTERPRETER_LIB_PYTHON_FLAGS_H
#define INTERPRETER_LIB_PYTHON_FLAGS_H

#include <cstdint>

namespace qlx {

enum InterpreterFlag : uint32_t {
  kFlagDebugParser = 0x1,        // -d
  kFlagVerbose = 0x2,            // -v
  kFlagInspect = 0x4,            // -i
  kFlagInteractive = 0x8,        // the read-evaluate loop
  kFlagImportSite = 0x10,        // not -S
  kFlagOptimize = 0x20,          // -O
  kFlagOptimizeMore = 0x40,      // -OO
  kFlagUnbuffered = 0x80,        // -u
  kFlagQuiet = 0x100,            // -q
  kFlagUserSite = 0x200,         // not -s
  kFlagBytesWarning = 0x400,     // -b
  kFlagBytesError = 0x800,       // -bb
  kFlagUseEnvironment = 0x1000,  // not -E
  kFlagIsolated = 0x2000,        // -I
  kFlagWriteBytecode = 0x4000,   // not -B
  kFlagHasOperation = 1u << 28,  // command-line application with something to run
  kFlagEmbedded = 1u << 29,      // any other application
};

inline constexpr uint32_t kInterpreterFlags =
    kFlagImportSite | kFlagUserSite | kFlagUseEnvironment | kFlagWriteBytecode;
static_assert(kInterpreterFlags == 21008);

}  // namespace qlx

#endif
