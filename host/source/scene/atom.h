// The elements of a scene.
#ifndef HOST_SCENE_ATOM_H
#define HOST_SCENE_ATOM_H

#include <memory>
#include <string>

#include "kelvar.framework/source/tables/t_baselist.h"
#include "scene/container.h"
#include "scene/dynamicdescription.h"
#include "scene/links.h"
#include "scene/nodetypes.h"

struct QLXAtom : host::Linkable {
  explicit QLXAtom(const host::NodeType& ofType) : type(ofType) {}

  const host::NodeType& type;
};

// A node in a list of a head, or below another node. What is in no list belongs to its creator.
struct GeListNode : QLXAtom {
  using QLXAtom::QLXAtom;

  GeListNode* next = nullptr;
  GeListNode* pred = nullptr;
  GeListNode* up = nullptr;
  GeListNode* down = nullptr;
  GeListNode* downLast = nullptr;
  void* pluginData = nullptr;  // what `Create` of the type's record made
  GeListHead* list = nullptr;  // of a node without `up` only: the others find it above them
};

struct BaseList2D : GeListNode {
  explicit BaseList2D(const host::NodeType& ofType)
      : GeListNode(ofType), name(ofType.name), data(ofType.defaults) {}

  std::string name;
  BaseContainer data;
  std::unique_ptr<DynamicDescription> dynamic;  // null until it is asked for
};

namespace host {

// Null for an atom that has no parameters.
inline BaseList2D* AsElement(QLXAtom* atom) {
  return atom && atom->type.isElement ? static_cast<BaseList2D*>(atom) : nullptr;
}
inline const BaseList2D* AsElement(const QLXAtom* atom) { return AsElement(const_cast<QLXAtom*>(atom)); }

// Counts a change of what the flags (DIRTYFLAGS) name.
void Touch(QLXAtom& atom, int32_t dirtyFlags);

}  // namespace host

#endif
