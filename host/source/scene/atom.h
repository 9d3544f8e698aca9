// The elements of a scene.
#ifndef HOST_SCENE_ATOM_H
#define HOST_SCENE_ATOM_H

#include <string>

#include "kelvar.framework/source/tables/t_baselist.h"
#include "scene/container.h"
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
  GeListHead* list = nullptr;  // of a node without `up` only: the others find it above them
};

struct BaseList2D : GeListNode {
  explicit BaseList2D(const host::NodeType& ofType) : GeListNode(ofType), name(ofType.name) {}

  std::string name;
  BaseContainer data;
};

#endif
