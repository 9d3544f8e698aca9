// The module file: loading it, and calling its entry.
#ifndef HOST_APP_MODULE_LOADER_H
#define HOST_APP_MODULE_LOADER_H

#include <filesystem>

#include "core.framework/source/tavor/tables/t_tavor.h"

namespace host {

class Module {
 public:
  // Loads the file for this process alone, fills its platform record and gives it the host's
  // way to yield. Throws std::runtime_error. The file stays loaded until the process ends,
  // because threads and exit handlers of its interpreter may still stand in it.
  explicit Module(std::filesystem::path file);

  int32_t Call(int32_t action, void* p1 = nullptr, void* p2 = nullptr, void* p3 = nullptr) const {
    return main_(action, p1, p2, p3);
  }
  // Whether the module took the message.
  bool Message(int32_t id) const;

  const std::filesystem::path& File() const { return file_; }

 private:
  std::filesystem::path file_;
  QlxMain main_ = nullptr;
};

// QLX_MODULE, or the module that lies with the application.
std::filesystem::path FindModule();

}  // namespace host

#endif
