// A plug-in's code on an element that it may destroy.
#ifndef HOST_SCENE_PLUGINCODE_H
#define HOST_SCENE_PLUGINCODE_H

#include "boundary/host.h"
#include "scene/atom.h"

namespace host {

// Keeps the element's memory while the plug-in's code runs.
class PluginCode {
 public:
  explicit PluginCode(const QLXAtom& element) {
    const_cast<QLXAtom&>(element).Link(link_);  // whether it was linked is nothing that a reader sees
    link::PinLink(link_);
  }
  PluginCode(const PluginCode&) = delete;
  PluginCode& operator=(const PluginCode&) = delete;
  ~PluginCode() { link::UnpinLink(link_); }

  // False once the plug-in destroyed the element.
  bool IsAlive() const { return link::GetLink(link_) != nullptr; }

 private:
  HostLink link_{};
};

}  // namespace host

#endif
