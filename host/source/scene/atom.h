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

struct BaseList2D : QLXAtom {
  explicit BaseList2D(const host::NodeType& ofType) : QLXAtom(ofType), name(ofType.name) {}

  std::string name;
  BaseContainer data;
};

#endif
