// Names that tell elements of a file apart.
#ifndef HOST_FILES_SCENE_NAMES_H
#define HOST_FILES_SCENE_NAMES_H

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace host {

// As many whole characters as fit.
inline std::string_view FirstOf(std::string_view text, size_t longest) {
  if (text.size() <= longest) return text;
  while (longest > 0 && (uint8_t(text[longest]) & 0xc0) == 0x80) --longest;
  return text.substr(0, longest);
}

class TakenNames {
 public:
  // All that have a name of their own come first.
  template <class Items>
  explicit TakenNames(const Items& items) {
    for (const auto& item : items) names_.insert(item.name);
  }

  // The name, with a number where it is taken.
  std::string Take(const std::string& name) {
    std::string free = name;
    int& copies = copies_[name];
    while (!names_.insert(free).second) free = fmt::format("{}.{}", name, ++copies);
    return free;
  }

 private:
  std::unordered_set<std::string> names_;
  std::unordered_map<std::string, int> copies_;
};

}  // namespace host

#endif
