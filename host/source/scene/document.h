// The document that the application works on.
#ifndef HOST_SCENE_DOCUMENT_H
#define HOST_SCENE_DOCUMENT_H

namespace host {

// Ends the open documents; there is none from here on. Main thread, when no script runs any more.
void CloseDocuments();

}  // namespace host

#endif
