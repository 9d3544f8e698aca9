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

// Of glTF: whether faces were left out since then, because a corner of theirs is no point.
void ListenForDroppedFaces();
bool HasDroppedFaces();
// Whether a face has a corner that is no number of a point: the library takes it for the first one, or never
// comes to its end.
bool HasColladaWrongCorners(const std::string& path);
// Whether there are several, of which the library would put the last one on all faces.
bool HasPlyManyPictures(const std::string& path);

}  // namespace host

#endif
