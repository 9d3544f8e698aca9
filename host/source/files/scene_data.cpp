#include "files/scene_data.h"

#include <cstring>
#include <stdexcept>
#include <type_traits>

namespace host {
namespace {

template <class Item>
concept Plain = std::is_trivially_copyable_v<Item> && !requires(Item item) {
  Item::Fields(item);
};

class Packer {
 public:
  template <Plain Item>
  void Put(const Item& item) {
    bytes.append(reinterpret_cast<const char*>(&item), sizeof item);
  }
  void Put(const std::string& text) {
    Put(uint64_t(text.size()));
    bytes += text;
  }
  template <class Item>
  void Put(const std::vector<Item>& items) {
    Put(uint64_t(items.size()));
    if constexpr (Plain<Item>)
      bytes.append(reinterpret_cast<const char*>(items.data()), items.size() * sizeof(Item));
    else
      for (const Item& item : items) Put(item);
  }
  template <class Item>
  requires requires(Item item) { Item::Fields(item); }
  void Put(const Item& item) {
    std::apply([&](auto&... fields) { (Put(fields), ...); }, Item::Fields(item));
  }

  std::string bytes;
};

class Unpacker {
 public:
  explicit Unpacker(std::string_view bytes) : left_(bytes) {}

  template <Plain Item>
  void Get(Item& item) {
    std::memcpy(&item, Take(sizeof item), sizeof item);
  }
  void Get(std::string& text) {
    const size_t size = Count(1);
    text.assign(Take(size), size);
  }
  template <class Item>
  void Get(std::vector<Item>& items) {
    if constexpr (Plain<Item>) {
      const size_t count = Count(sizeof(Item));
      items.resize(count);
      if (count) std::memcpy(items.data(), Take(count * sizeof(Item)), count * sizeof(Item));
    } else {
      // The least that one needs is the length of a text or a number; memory grows with what is there.
      const size_t count = Count(sizeof(int32_t));
      items.clear();
      for (size_t i = 0; i < count; ++i) Get(items.emplace_back());
    }
  }
  template <class Item>
  requires requires(Item item) { Item::Fields(item); }
  void Get(Item& item) {
    std::apply([&](auto&... fields) { (Get(fields), ...); }, Item::Fields(item));
  }
  bool IsAtEnd() const { return left_.empty(); }

 private:
  [[noreturn]] static void Refuse() { throw std::runtime_error("the program that reads files failed"); }
  size_t Count(size_t size) {
    uint64_t count;
    Get(count);
    if (count > left_.size() / size) Refuse();
    return size_t(count);
  }
  const char* Take(size_t size) {
    if (size > left_.size()) Refuse();
    const char* at = left_.data();
    left_.remove_prefix(size);
    return at;
  }

  std::string_view left_;
};

template <class Item>
std::string PackAny(const Item& item) {
  Packer packer;
  packer.Put(item);
  return std::move(packer.bytes);
}

template <class Item>
Item UnpackAny(std::string_view bytes) {
  Item item;
  Unpacker unpacker(bytes);
  unpacker.Get(item);
  if (!unpacker.IsAtEnd()) throw std::runtime_error("the program that reads files failed");
  return item;
}

}  // namespace

std::string Pack(const FileScene& scene) { return PackAny(scene); }
std::string Pack(const FileRequest& request) { return PackAny(request); }
FileScene UnpackScene(std::string_view bytes) { return UnpackAny<FileScene>(bytes); }
FileRequest UnpackRequest(std::string_view bytes) { return UnpackAny<FileRequest>(bytes); }

}  // namespace host
