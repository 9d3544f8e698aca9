// The module qlx.documents.

#include "kit/i_row.h"
#include "scene/documents.h"

namespace qlx {
namespace {

void SetActiveDocument(PyObject*, BaseDocument* doc) { doc->SetActiveDocument(); }

PyObject* InsertBaseDocument(PyObject*, WrapperOf<BaseDocument>* doc) {
  BaseDocument* host;
  if (!doc->Get(host)) return nullptr;
  doc->owned = false;  // the application's; the host takes it out of where it was, and can't refuse it
  host->InsertBaseDocument();
  return NewNone();
}

// Whoever owns it: the wrapper finds it gone.
void KillDocument(PyObject*, BaseDocument* doc) { doc->KillDocument(); }

PyObject* IsolateObjects(PyObject*, WrapperOf<BaseDocument>* doc, PyObject* t_objects) {
  BaseDocument* host;
  if (!doc->Get(host)) return nullptr;
  const HostAtoms objects = ReadAtoms(t_objects, "IsolateObjects");
  if (!objects || !doc->Get(host)) return nullptr;  // the list's own code may have destroyed it
  BaseDocument* made = host->IsolateObjects(objects.get());
  return made ? WrapHostObject(made, true) : NewNone();  // the script's
}

void SetDocumentTime(PyObject*, BaseDocument* doc, const BaseTime& time) { doc->SetDocumentTime(&time); }

}  // namespace

PyMethodDef g_documentsFunctions[] = {
    Function<&BaseDocument::GetActiveDocument>(
        "GetActiveDocument",
        "GetActiveDocument() -> qlx.documents.BaseDocument or None\n\nThe active document."),
    Function<&BaseDocument::GetFirstDocument>("GetFirstDocument",
                                              "GetFirstDocument() -> qlx.documents.BaseDocument or None\n\n"
                                              "The first open document; the others follow by GetNext."),
    Method<&SetActiveDocument, "A!", "doc">("SetActiveDocument",
                                            "SetActiveDocument(doc) -> None\n\nMakes an open document the "
                                            "active one. Nothing happens for another."),
    Method<&InsertBaseDocument, "O!", "doc">(
        "InsertBaseDocument",
        "InsertBaseDocument(doc) -> None\n\n"
        "Opens a document: it stands last among the open ones, and belongs to the application."),
    Method<&KillDocument, "A!", "doc">(
        "KillDocument",
        "KillDocument(doc) -> None\n\nDestroys a document with all that is in it, whoever owns it."),
    Method<&documents::LoadFile, "%", "name">(
        "LoadFile",
        "LoadFile(name) -> bool\n\n"
        "Opens the scene of a file and makes it the active document. False when it can't be read; standard "
        "error has the reason. Other threads run meanwhile."),
    Method<&documents::LoadDocument, "%i|X", "name", "loadflags", "thread">(
        "LoadDocument",
        "LoadDocument(name, loadflags, thread=None) -> qlx.documents.BaseDocument or None\n\n"
        "A new document with what a file has: loadflags are qlx.SCENEFILTER_OBJECTS and _MATERIALS. It is the "
        "script's until InsertBaseDocument. None when it can't be read, or `thread`, a "
        "qlx.threading.BaseThread, is "
        "to stop; standard error has the reason. Other threads run meanwhile."),
    Method<&documents::MergeDocument, "A!%i|X", "doc", "name", "loadflags", "thread">(
        "MergeDocument",
        "MergeDocument(doc, name, loadflags, thread=None) -> bool\n\n"
        "Adds what a file has to a document. False, and nothing has changed, when it can't be read, or "
        "`thread` "
        "is to stop."),
    Method<&documents::SaveDocument, "A!%ii", "doc", "name", "saveflags", "format">(
        "SaveDocument",
        "SaveDocument(doc, name, saveflags, format) -> bool\n\n"
        "Evaluates a copy of the document and writes it to a file, in a format qlx.FORMAT_... With\n"
        "qlx.SAVEDOCUMENTFLAGS_SAVEAS the document takes the file's name. False when it can't be written; the\n"
        "file that was there is whole then. Other threads run meanwhile."),
    Method<&IsolateObjects, "O!O", "doc", "t_objects">(
        "IsolateObjects",
        "IsolateObjects(doc, t_objects) -> qlx.documents.BaseDocument or None\n\n"
        "A new document with copies of these objects, of what is below them and of their materials. None when\n"
        "none of them is an object of the document; an empty list raises ValueError."),
    Method<&SetDocumentTime, "A!T", "doc", "time">(
        "SetDocumentTime", "SetDocumentTime(doc, time) -> None\n\nSets the time and asks for a refresh."),
    Function<&BaseDocument::CloseAllDocuments>(
        "CloseAllDocuments",
        "CloseAllDocuments() -> bool\n\nDestroys all open documents. The active one is a new empty one then."),
    {},
};

// No script can ask for calls of the host yet.
void AllocDocumentCallbacks() {}
void FreeDocumentCallbacks() {}

}  // namespace qlx
