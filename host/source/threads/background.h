// The host's own threads that work in the background, by what they do (BackgroundThreadClass).
#ifndef HOST_THREADS_BACKGROUND_H
#define HOST_THREADS_BACKGROUND_H

#include "threads/thread.h"

namespace host {

// While it runs.
void AddBackground(BaseThread& thread, int32_t threadClass);
void RemoveBackground(const BaseThread& thread);

// One of that class, or of any.
bool IsBackgroundRunning(int32_t threadClass, bool any);

// Ends those of that class and waits for them, but for the calling one.
void StopBackground(int32_t threadClass);

}  // namespace host

#endif
