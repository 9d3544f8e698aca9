// The package `qlx`: its module and the references that the module keeps to it.

#include "kit/i_package.h"

#include <cstring>
#include <initializer_list>
#include <string>

#include "bitmaps/bitmaps.h"
#include "interpreter/lib_python_console.h"
#include "interpreter/lib_python_lock.h"
#include "kit/i_conversion.h"
#include "kit/i_lasting.h"
#include "plugins/plugins.h"
#include "scene/documents.h"
#include "scene/geometry.h"
#include "scene/scene.h"
#include "storage/storage.h"
#include "threading/threads.h"
#include "values/values.h"

namespace qlx {
namespace {

PyModuleDef g_definition = {
    PyModuleDef_HEAD_INIT,
    "qlx",
    "Common module for the most required classes and functions.",
    0,  // each import calls InitPackage
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

Lasting<KeptReference> g_packageModule;
Lasting<KeptReference> g_packageDictionary;
Lasting<KeptReference> g_importedModule;
Lasting<KeptReference> g_subModules;  // a dictionary of them by their whole names

using Types = std::initializer_list<PyTypeObject*>;

struct Module {
  const char* name;
  const char* doc;
  Types types;
  PyMethodDef* functions = nullptr;
};

// The tree, in the order in which scripts find it. A type is known by the last part of its name.

const Types kTypes = {
    &g_DescriptionType,    &g_DescLevelType,          &g_DescIDType,          &g_CPolygonType,
    &g_VectorType,         &g_Vector4dType,           &g_BaseSelectType,      &g_MatrixType,
    &g_BaseTimeType,       &g_BaseContainerType,      &g_QLXAtomType,         &g_CKeyType,
    &g_GeListNodeType,     &g_GeListHeadType,         &g_BaseList2DType,      &g_BaseMaterialType,
    &g_MaterialType,       &g_BaseShaderType,         &g_CCurveType,          &g_CTrackType,
    &g_BaseTagType,        &g_SelectionTagType,       &g_CustomDataTagType,   &g_TextureTagType,
    &g_VariableTagType,    &g_SegmentTagType,         &g_TangentTagType,      &g_PointTagType,
    &g_PolygonTagType,     &g_NormalTagType,          &g_UVWTagType,          &g_VertexColorTagType,
    &g_BaseObjectType,     &g_CameraObjectType,       &g_PointObjectType,     &g_PolygonObjectType,
    &g_LineObjectType,     &g_SplineObjectType,       &g_BaseDrawType,        &g_AliasTransType,
    &g_LayerShaderType,    &g_QuaternionType,         &g_VoronoiFractureType, &g_LodObjectType,
    &g_InstanceObjectType, &g_CustomIconSettingsType,
};

const Module kModules[] = {
    {"gui", "A module to create custom dialogs.", {}},
    {"documents",
     "Module for document handling.",
     {&g_BaseDocumentType, &g_RenderDataType, &g_LayerObjectType, &g_BaseVideoPostType},
     g_documentsFunctions},
    {"storage", "Module for IO operations", {&g_HyperFileType}, g_storageFunctions},
    // The text is that of another module; help() of scripts has always shown it.
    {"bitmaps", "Module for color chooser", {&g_BaseBitmapType}},
    {"modules", "The host's specialised modules.", {}},
    {"modules.character",
     "Character animation.",
     {&g_CAWeightTagType, &g_CAJointObjectType, &g_CAPoseMorphTagType}},
    {"modules.clonix", "Cloners, falloffs and fields.", {&g_FieldObjectType, &g_FieldLayerType}},
    {"modules.net", "The render farm.", {&g_RenderJobType}},
    {"modules.hair",
     "Hair.",
     {&g_HairObjectType, &g_HairSelectionTagType, &g_HairVertexMapTagType, &g_HairTangentTagType}},
    {"modules.frescoa",
     "Painting.",
     {&g_PaintBitmapType, &g_PaintTextureType, &g_PaintLayerType, &g_PaintLayerFolderType}},
    {"modules.particles", "Particles of emitters.", {}},
    {"modules.driftmotes", "The particle system.", {&g_DMMasterSystemType, &g_DMPGroupType}},
    {"modules.render", "Rendering.", {}},
    {"modules.sculpting", "Sculpting.", {&g_SculptTagType}},
    {"modules.graphview", "Graphs of nodes.", {&g_GvNodeMasterType, &g_GvNodeType, &g_WireletTagType}},
    {"modules.snap", "Snapping.", {}},
    {"modules.takesystem", "Takes.", {&g_BaseTakeType, &g_BaseOverrideType, &g_BaseOverrideGroupType}},
    {"modules.tokensystem", "Tokens in file names.", {}},
    {"modules.colorchooser", "Module for color chooser", {}},
    {"modules.substance", "Substance materials.", {}},
    {"modules.motiontracker", "Motion tracking.", {&g_MotionTrackerObjectType}},
    {"modules.volume", "Volumes.", {&g_VolumeObjectType, &g_VolumeBuilderType}},
    {"plugins", "Plug-ins: their classes and registration.", {&g_GeResourceType, &g_BaseDataType}},
    {"utils", "Helpers for geometry and modeling.", {&g_NeighborType}},
    {"threading", "Threads of the host.", {&g_BaseThreadType, &g_QLXThreadType}, g_threadingFunctions},
    {"internals", "What serves the tests of the package.", {}},
};

bool AddTo(PyObject* module, const char* name, PyObject* object) {
  Py_INCREF(object);
  if (PyModule_AddObject(module, name, object) == 0) return true;
  Py_DECREF(object);
  return false;
}

bool AddTypes(PyObject* module, const Types& types) {
  for (PyTypeObject* type : types)
    if (PyType_Ready(type) < 0 ||
        !AddTo(module, std::strrchr(type->tp_name, '.') + 1, reinterpret_cast<PyObject*>(type)))
      return false;
  return true;
}

// A module with a path is a package: the interpreter looks for its sub-modules.
bool MakePackage(PyObject* module) {
  PyObject* path = PyList_New(0);
  const bool made = path && AddTo(module, "__path__", path);
  Py_XDECREF(path);
  return made;
}

// A sub-module under its short name, which `import` finds by the whole one.
bool AddModule(PyObject* package, const Module& entry) {
  const std::string name = std::string("qlx.") + entry.name;
  const size_t dot = name.rfind('.');
  PyObject* parent =
      dot == 3 ? package : PyImport_AddModule(name.substr(0, dot).c_str());  // borrowed, as all here
  PyObject* module = parent ? PyImport_AddModule(name.c_str()) : nullptr;
  return module && PyDict_SetItemString(g_subModules->Get(), name.c_str(), module) == 0 &&
         PyModule_SetDocString(module, entry.doc) == 0 && MakePackage(module) &&
         (!entry.functions || PyModule_AddFunctions(module, entry.functions) == 0) &&
         AddTypes(module, entry.types) && AddTo(parent, name.c_str() + dot + 1, module);
}

bool InitPackageContents(PyObject* module) {
  if (!MakePackage(module) || PyModule_AddIntConstant(module, "TAVOR_TARGET_DEBUG", 0) < 0) return false;
  if (!AddConsoleFunctions(module) || !AddEventFunctions(module) || !AddTypes(module, kTypes)) return false;
  *g_subModules = KeptReference::Adopt(PyDict_New());
  if (!*g_subModules) return false;
  for (const Module& entry : kModules)
    if (!AddModule(module, entry)) return false;
  AddKnownSymbols(module);
  return true;
}

}  // namespace

PyObject* InitPackage() {
  // A script that drops the package and imports it again gets the same one, and its sub-modules.
  if (*g_packageModule) {
    if (PyDict_Merge(PyImport_GetModuleDict(), g_subModules->Get(), false) < 0) return nullptr;
    Py_INCREF(g_packageModule->Get());
    return g_packageModule->Get();
  }
  PyObject* module = PyModule_Create(&g_definition);
  PyObject* dictionary = module ? PyModule_GetDict(module) : nullptr;
  if (!dictionary || !InitPackageContents(module)) {
    Py_XDECREF(module);
    // The reason is of no use to whoever imports; a null without an error would be a fault
    // of its own for the interpreter.
    PyErr_Clear();
    PyErr_SetString(PyExc_ImportError, "the package 'qlx' could not be built");
    return nullptr;
  }
  Py_INCREF(module);
  *g_packageModule = KeptReference::Adopt(module);
  Py_INCREF(dictionary);
  *g_packageDictionary = KeptReference::Adopt(dictionary);
  return module;
}

tavor::Error ImportPackage() {
  PyObject* module = PyImport_ImportModule("qlx");
  PyErr_Clear();
  if (!module) return tavor::Error("unable to import qlx module");
  *g_importedModule = KeptReference::Adopt(module);
  return {};
}

PyObject* PackageDictionary() { return g_packageDictionary->Get(); }

void ReleasePackage() {
  g_packageModule->Drop();
  g_packageDictionary->Drop();
  g_importedModule->Drop();
  g_subModules->Drop();
  ReleaseUuidModule();
}

}  // namespace qlx
