// The elements of a scene.
#ifndef HOST_SCENE_ATOM_H
#define HOST_SCENE_ATOM_H

#include <map>
#include <memory>
#include <vector>

#include "kelvar.framework/source/tables/t_plugin.h"
#include "scene/container.h"
#include "scene/dynamicdescription.h"
#include "scene/links.h"
#include "scene/nodetypes.h"
#include "scene/text.h"

struct BaseDocument;
struct LayerObject;

namespace host {

enum class Kind : uint8_t;
struct Extras;

// A change of what `dirtyFlags` (DIRTYFLAGS) name: counts it, and stamps it for those who look from above.
void Touch(QLXAtom& atom, int32_t dirtyFlags);

}  // namespace host

struct QLXAtom : host::Linkable {
  explicit QLXAtom(const host::NodeType& ofType);
  ~QLXAtom() override;

  // What only few atoms have; made on demand.
  host::Extras& Extra();

  // Answers a message, without what follows from it for others.
  virtual bool Answer(int32_t id, void* data);
  // Whether Answer may run the code of others.
  virtual bool AsksOthers() const;
  virtual bool BelongsToDocuments() const;
  // What only this class has, in a chunk of its own: later versions write more behind it. False where the file
  // can't take it, or holds something else.
  virtual bool WriteOwn(HyperFile& file) const;
  virtual bool ReadOwn(HyperFile& file);

  // These lie in what the base leaves free.
  bool isFixed : 1 = false;       // the host keeps it: neither moved nor freed by others
  bool isEnding : 1 = false;      // its destruction has begun
  bool isPlugin : 1 = false;      // with the data of a plug-in's type; its callbacks can be called
  bool hasFreeHeads : 1 = false;  // free heads may call it their parent
  const host::Kind kind;          // for a head: that of what it lists
  int32_t bits = 0;

  const host::NodeType& type;
  std::unique_ptr<host::Extras> extras;
  uint32_t dirty[6] = {};  // by the bits of DIRTYFLAGS, from DIRTYFLAGS_MATRIX on
  uint64_t changed = 0;    // stamps of the latest changes
  uint64_t changedMatrix = 0;
  uint64_t changedHierarchy = 0;

 protected:
  QLXAtom(const host::NodeType& ofType, host::Kind ofKind);
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

 protected:
  bool Leave() override;
  host::Linkable* Chained() override { return next; }
  void Unchain() override { next = nullptr; }
};

// The nodes of the list are those below the head; they have the head for their `list` and no `up`.
struct GeListHead : GeListNode {
  GeListHead();
  GeListHead(GeListNode& ofOwner, int32_t ofBranch);

  GeListNode* const owner;  // of a branch; null for a free head
  const int32_t branch;     // what GetBranchInfo calls the list
  HostLink parent{};        // of a free head
};

struct BaseList2D : GeListNode {
  explicit BaseList2D(const host::NodeType& ofType);

  // Parameters that do not lie in the container; false for others.
  virtual bool GetOwn(int32_t parameter, host::Value& value) const;
  virtual bool SetOwn(int32_t parameter, const HostGeData& value);
  // Copies what nodes of this class have beside a name and a container into another one of the same type.
  virtual void CopyOwn(BaseList2D& to) const;

  host::Text name;
  BaseContainer data;
  uint32_t seenData = data.dirty;               // the changes of `data` that are in `changed`
  std::unique_ptr<DynamicDescription> dynamic;  // null until it is asked for
};

struct BaseTag : BaseList2D {
  using BaseList2D::BaseList2D;
};
struct BaseMaterial : BaseList2D {
  using BaseList2D::BaseList2D;
};
struct BaseShader : BaseList2D {
  using BaseList2D::BaseList2D;
};

struct CTrack : BaseList2D {
  using BaseList2D::BaseList2D;
  void CopyOwn(BaseList2D& to) const override;

  bool WriteOwn(HyperFile& file) const override;
  bool ReadOwn(HyperFile& file) override;

  std::vector<DescLevel> parameter;
};

struct LayerObject : BaseList2D {
  explicit LayerObject(const host::NodeType& ofType);
  void CopyOwn(BaseList2D& to) const override;

  bool WriteOwn(HyperFile& file) const override;
  bool ReadOwn(HyperFile& file) override;

  HostLayerData says;
};

struct BaseDocument : BaseList2D {
  explicit BaseDocument(const host::NodeType& ofType);
  void CopyOwn(BaseList2D& to) const override;

  host::Text folder;                          // of its file
  std::map<int32_t, BaseContainer> settings;  // by DOCUMENTSETTINGS, but for the general ones: those are `data`
  bool isChanged = false;
};

namespace host {

// Null for an atom that has no parameters.
inline BaseList2D* AsElement(QLXAtom* atom) {
  return atom && atom->type.isElement ? static_cast<BaseList2D*>(atom) : nullptr;
}
inline const BaseList2D* AsElement(const QLXAtom* atom) { return AsElement(const_cast<QLXAtom*>(atom)); }

// What the host knows an atom to be. Others tell what they like by IsInstanceOf, so a pointer that comes
// through the boundary is looked at.
template <class Atom>
Atom* As(QLXAtom* atom) {
  return dynamic_cast<Atom*>(atom);
}
template <class Atom>
const Atom* As(const QLXAtom* atom) {
  return dynamic_cast<const Atom*>(atom);
}

}  // namespace host

#endif
