// Objects that last: never destroyed. At the process' exit neither the interpreter nor the
// host need be there for a destructor.
#ifndef KIT_I_LASTING_H
#define KIT_I_LASTING_H

#include <new>

namespace qlx {

template <class T>
class Lasting {
 public:
  Lasting() { new (&object_) T; }
  ~Lasting() {}
  Lasting(const Lasting&) = delete;
  Lasting& operator=(const Lasting&) = delete;

  T& operator*() { return object_; }
  T* operator->() { return &object_; }

 private:
  union {
    T object_;
  };
};

}  // namespace qlx

#endif
