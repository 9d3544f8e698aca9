// The host's messages, and the steps of the entry that they reach.
#ifndef INTERPRETER_MESSAGES_H
#define INTERPRETER_MESSAGES_H

#include <cstdint>

namespace qlx {

// What the module tells other plug-ins.
inline constexpr int32_t kMessagePythonReady = 1026661;
inline constexpr int32_t kMessagePythonEnds = 1026662;
inline constexpr int32_t kMessageRegisterDynamic = 1027123;
inline constexpr int32_t kMessageScriptsEnd = 300002146;

bool PluginMessage(int32_t id, void* data);

// Message 1: the module's texts, its language, its symbol hook.
bool InitModule();
bool OpenModuleResource();

}  // namespace qlx

#endif
