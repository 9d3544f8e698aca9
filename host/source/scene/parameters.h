// What an element's parameters are, and how values come into their form.
#ifndef HOST_SCENE_PARAMETERS_H
#define HOST_SCENE_PARAMETERS_H

#include <limits>
#include <memory>

#include "kelvar.framework/source/tables/t_description.h"
#include "scene/gedata.h"

namespace host {

// A parameter, or a group of them, as its settings (HostDescSetting) tell it.
struct Parameter {
  // Throws std::invalid_argument for a data type that is not known, and a default of another type.
  Parameter(std::initializer_list<DescLevel> id, const DescLevel& inGroup, const BaseContainer& withSettings);

  HostDescID Id() const { return {levels, depth, 0}; }
  HostDescID Group() const { return {&group, group.id != 0, 0}; }
  int32_t Number() const { return levels[depth - 1].id; }
  bool IsGroup() const { return valueType == HOST_DATA_NONE; }

  // The value in this parameter's type and range; no value where it fits neither.
  Value Fit(const HostGeData& value) const;

  DescLevel levels[2]{};
  int32_t depth;
  DescLevel group;  // id 0: stands in none
  int32_t valueType;
  double min = -std::numeric_limits<double>::infinity();
  double max = std::numeric_limits<double>::infinity();
  bool isOfMatrix = false;                // a change of it is one of the element's matrix
  std::shared_ptr<const Value> standard;  // the default
  BaseContainer settings;
};

// The value as one of that type: itself, or a number as a wider or, at its ends, a narrower one. No value
// where there is no such way.
Value Convert(const HostGeData& value, int32_t type);

// Stores a value, as the entry of that id.
void Put(BaseContainer& container, int32_t id, const Value& value);

}  // namespace host

#endif
