// The types of scene elements, as the files in resources/nodes declare them.
#ifndef HOST_SCENE_NODETYPES_H
#define HOST_SCENE_NODETYPES_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "kelvar.framework/source/tables/t_plugin.h"
#include "scene/container.h"

namespace host {

struct NodeType {
  int32_t id = 0;
  int32_t base = 0;         // 0: derives from none
  bool isAbstract = false;  // only a base of others
  int32_t info = 0;         // what GetInfo answers
  std::string name;         // what a new element is called
  std::string typeName;
  std::string help;
  std::string icon;
  BaseContainer defaults;              // what a new element shares
  const NodeRecord* record = nullptr;  // of a plug-in's type
};

class NodeTypes {
 public:
  // Reads every file of the folder. A file that is wrong is left out and told by a fault.
  explicit NodeTypes(const std::filesystem::path& folder);

  // Null for an unknown id.
  const NodeType* Find(int32_t id) const;

  // Adds a type that derives from one which is there. Throws std::runtime_error with the reason.
  const NodeType* Add(NodeType type);

  // Whether the type is `id` or derives from it.
  bool Derives(const NodeType& type, int32_t id) const;

  const std::vector<std::string>& Faults() const { return faults_; }

 private:
  void Read(const std::filesystem::path& file);

  std::map<int32_t, NodeType> byId_;
  std::vector<std::string> faults_;
};

// Those of this application, read on first use.
NodeTypes& AllNodeTypes();

}  // namespace host

#endif
