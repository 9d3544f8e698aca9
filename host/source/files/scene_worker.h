// The host's end of the program that reads and writes files of scenes.
#ifndef HOST_FILES_SCENE_WORKER_H
#define HOST_FILES_SCENE_WORKER_H

#include "files/scene_data.h"
#include "files/scene_files.h"

namespace host {

// Runs the program; what it reads, or an empty scene. `what` is the part that the progress is of. Throws
// std::runtime_error with the reason, Stopped, or std::bad_alloc; the program has ended by then.
FileScene RunWorker(const FileRequest& request, Progress* progress, const char* what);

}  // namespace host

#endif
