// The types of scene elements, as the files in resources/nodes declare them.
#ifndef HOST_SCENE_NODETYPES_H
#define HOST_SCENE_NODETYPES_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <shared_mutex>
#include <string>
#include <vector>

#include "app/symbols.h"
#include "kelvar.framework/source/tables/t_plugin.h"
#include "scene/parameters.h"

namespace host {

// First what a type declares itself; in NodeTypes what it inherits stands ahead of that.
struct NodeType {
  int32_t id = 0;
  int32_t base = 0;         // 0: derives from none
  bool isAbstract = false;  // a base of others, or made by calls of its own
  bool isElement = true;    // a BaseList2D, which has parameters
  int32_t info = 0;         // what GetInfo answers
  std::string name;         // what a new element is called
  std::string typeName;
  std::string help;
  std::string icon;
  std::vector<Parameter> groups;      // parents first
  std::vector<Parameter> parameters;  // each at the position of its entry in `places`
  std::vector<Parameter> overrides;   // of these only the id and the default matter
  std::vector<Symbol> symbols;        // of this type, and not of what it inherits
  BaseContainer places;
  BaseContainer defaults;              // what a new element shares; objects keep the matrix in another form
  std::vector<int32_t> bases;          // the type itself, its base, and so on
  const NodeRecord* record = nullptr;  // of a plug-in's type

  // Null for a number that no parameter of this type has.
  const Parameter* Find(int32_t parameter) const;
};

// Reads the declaration of one type. Throws std::runtime_error with the file, the line and the reason.
NodeType ReadNodeType(const std::filesystem::path& file);

class NodeTypes {
 public:
  // Reads every file of the folder. A file that is wrong is left out and told by a fault, and so is a type
  // without its base.
  explicit NodeTypes(const std::filesystem::path& folder);

  // Null for an unknown id. A type stays where it is.
  const NodeType* Find(int32_t id) const;

  // Adds a type that derives from one which is there. Throws std::runtime_error with the reason: an id that is
  // taken, a missing base, or a parameter in conflict with what is inherited.
  const NodeType* Add(NodeType type);

  // Whether the type is `id` or derives from it.
  static bool Derives(const NodeType& type, int32_t id);

  const std::vector<std::string>& Faults() const { return faults_; }

  // In the order of their names; one that several types share comes once.
  std::vector<Symbol> Symbols() const;

 private:
  mutable std::shared_mutex lock_;
  std::map<int32_t, NodeType> byId_;
  std::map<std::string, int32_t, std::less<>> symbols_;
  std::vector<std::string> faults_;
};

// Those of this application, read on first use.
NodeTypes& AllNodeTypes();

}  // namespace host

#endif
