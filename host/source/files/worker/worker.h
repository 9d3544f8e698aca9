// The program that reads and writes files of scenes. What a file does to the library's memory, stack or
// patience happens to this process alone.
#ifndef HOST_FILES_WORKER_WORKER_H
#define HOST_FILES_WORKER_WORKER_H

#include "files/scene_data.h"

namespace host {

// Tells the host how much of its part is done, from 0 to 1.
void ReportProgress(double fraction);

// Both throw std::exception with the reason.
FileScene ReadScene(const FileRequest& request);
void WriteScene(const FileRequest& request);

}  // namespace host

#endif
