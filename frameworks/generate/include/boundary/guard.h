// Keeps C++ exceptions on their side of the boundary.
#ifndef BOUNDARY_GUARD_H
#define BOUNDARY_GUARD_H

#include <cxxabi.h>

#include <new>
#include <type_traits>

#include "../../../kelvar.framework/source/tables/t_types.h"

namespace boundary {

// Runs an entry; an exception becomes the entry's documented failure. A thread that is being
// cancelled unwinds on; its unwinding carries no object, which a sanitizer takes for a fault.
template <class Function, class Failure>
__attribute__((no_sanitize("undefined"))) auto Guard(Function&& function, Failure failure)
    -> std::invoke_result_t<Function> {
  try {
    return function();
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
    return failure;
  }
}

template <class Function>
__attribute__((no_sanitize("undefined"))) auto Guard(Function&& function) -> std::invoke_result_t<Function> {
  using Result = std::invoke_result_t<Function>;
  try {
    return function();
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (const std::bad_alloc&) {
    if constexpr (std::is_same_v<Result, HostResult>) return {HOST_RESULT_OUT_OF_MEMORY, 0, nullptr, {nullptr}};
  } catch (...) {
    if constexpr (std::is_same_v<Result, HostResult>) return {HOST_RESULT_ERROR, 0, nullptr, {nullptr}};
  }
  if constexpr (!std::is_void_v<Result> && !std::is_same_v<Result, HostResult>) return Result{};
}

}  // namespace boundary

#endif
