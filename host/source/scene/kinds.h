// The kinds of elements, and how one is made of its type.
#ifndef HOST_SCENE_KINDS_H
#define HOST_SCENE_KINDS_H

#include "scene/atom.h"

namespace host {

enum class Kind : uint8_t {
  kNone,
  kObject,
  kTag,
  kMaterial,
  kShader,
  kRenderData,
  kTrack,
  kCurve,
  kKey,
  kLayer,
  kVideoPost,
  kDocument,
  kHead
};

// The ids of base types, which name branches too.
enum BaseType : int32_t {
  kTypeNLA = 5349,
  kTypeTrack = 5350,
  kTypeObject = 5155,
  kTypeTag = 5694,
  kTypeVariableTag = 5695,
  kTypeMaterial = 5702,
  kTypeShader = 5707,
  kTypeDocument = 110059,
  kTypeHead = 110063,
  kTypeRenderData = 110304,
  kTypeLayer = 100004801
};

struct KindInfo {
  Kind kind;
  int32_t base;                  // the type that all of the kind derive from
  int32_t hdirty;                // what of HDIRTYFLAGS they are
  const char* type = nullptr;    // what the type is called where no file declares it; null: it needs none
  bool isAbstract = false;       // of that type
  const char* branch = nullptr;  // what a list of them is called
  int32_t branchFlags = 0;       // BRANCHINFOFLAGS of the list
};

const KindInfo& InfoOf(Kind kind);
Kind KindOf(const NodeType& type);
Kind KindOfBranch(int32_t branch);

inline bool IsHead(const QLXAtom& atom) { return atom.type.id == kTypeHead; }

// The type with that id; null when there is none.
const NodeType* FindType(int32_t id);

// A new atom without what a plug-in does for it: of the class that its kind wants.
GeListNode* NewNode(const NodeType& type);

// Lets the plug-in of the atom's type, when it is of one, make it ready. Runs the code of others; whether the
// atom can be used.
bool MakeReady(GeListNode& node);

// A new element of that type, which has to derive from `base`; null when there is none such, or when its
// plug-in refuses it.
BaseList2D* MakeElement(int32_t type, int32_t base = 0);

// The callbacks of the atom's plug-in, and what they work on; null where it has none, or none that is ready.
inline const NodeRecord* PluginOf(const QLXAtom& atom) { return atom.isPlugin ? atom.type.record : nullptr; }
void* PluginData(const QLXAtom& atom);

}  // namespace host

#endif
