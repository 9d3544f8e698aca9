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

constexpr size_t kAlignment = 8;  // of rows

size_t Padding(size_t at) { return (kAlignment - at % kAlignment) % kAlignment; }

class Packer {
 public:
  explicit Packer(ByteSink& sink) : sink_(sink) {}

  template <Plain Item>
  void Put(const Item& item) {
    Bytes(&item, sizeof item);
  }
  void Put(const std::string& text) {
    Put(uint64_t(text.size()));
    Bytes(text.data(), text.size());
  }
  template <class Item>
  void Put(const std::vector<Item>& items) {
    Put(uint64_t(items.size()));
    for (const Item& item : items) Put(item);
  }
  template <class Item>
  void Put(const Rows<Item>& rows) {
    Put(uint64_t(rows.size()));
    Bytes("\0\0\0\0\0\0\0", Padding(size_));
    Bytes(rows.data(), rows.size() * sizeof(Item));
  }
  template <class Item>
  requires requires(Item item) { Item::Fields(item); }
  void Put(const Item& item) {
    std::apply([&](auto&... fields) { (Put(fields), ...); }, Item::Fields(item));
  }

 private:
  void Bytes(const void* bytes, size_t size) {
    sink_.Take(bytes, size);
    size_ += size;
  }

  ByteSink& sink_;
  size_t size_ = 0;
};

class Unpacker {
 public:
  explicit Unpacker(std::string_view bytes) : whole_(bytes.size()), left_(bytes) {}

  template <Plain Item>
  void Get(Item& item) {
    std::memcpy(&item, Take(sizeof item), sizeof item);
  }
  void Get(std::string& text) {
    const size_t size = Count(1);
    text.assign(Take(size), size);
  }
  // Memory grows with what is there.
  template <class Item>
  void Get(std::vector<Item>& items) {
    const size_t count = Count(sizeof(int32_t));
    items.clear();
    for (size_t i = 0; i < count; ++i) Get(items.emplace_back());
  }
  template <class Item>
  void Get(Rows<Item>& rows) {
    uint64_t count;
    Get(count);
    Take(Padding(whole_ - left_.size()));
    if (count > left_.size() / sizeof(Item)) Refuse();
    rows =
        Rows<Item>(std::span(reinterpret_cast<const Item*>(Take(size_t(count) * sizeof(Item))), size_t(count)));
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

  const size_t whole_;
  std::string_view left_;
};

template <class Item>
Item UnpackAny(std::string_view bytes) {
  Item item;
  Unpacker unpacker(bytes);
  unpacker.Get(item);
  if (!unpacker.IsAtEnd()) throw std::runtime_error("the program that reads files failed");
  return item;
}

}  // namespace

void Pack(const FileScene& scene, ByteSink& sink) { Packer(sink).Put(scene); }
void Pack(const FileRequest& request, ByteSink& sink) { Packer(sink).Put(request); }
FileScene UnpackScene(std::string_view bytes) { return UnpackAny<FileScene>(bytes); }
FileRequest UnpackRequest(std::string_view bytes) { return UnpackAny<FileRequest>(bytes); }

}  // namespace host
