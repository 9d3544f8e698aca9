// A counted reference to an object of an interface.
#ifndef TAVOR_REF_H
#define TAVOR_REF_H

#include <utility>

namespace tavor {

template <class Object>
class Ref {
 public:
  Ref() = default;
  Ref(const Ref& other) : object_(other.object_) {
    if (object_) object_->Retain();
  }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  // The last reference may have to wait for the interpreter, which can end a thread there.
  ~Ref() noexcept(false) {
    if (object_) object_->Release();
  }

  // Takes over a reference that the caller owns.
  static Ref Adopt(Object* object) {
    Ref ref;
    ref.object_ = object;
    return ref;
  }
  static Ref Share(Object* object) {
    if (object) object->Retain();
    return Adopt(object);
  }

  Object* Get() const { return object_; }
  Object* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Object* object_ = nullptr;
};

}  // namespace tavor

#endif
