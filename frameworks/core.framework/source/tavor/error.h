// Results and errors with the place in the source that made them.
#ifndef TAVOR_ERROR_H
#define TAVOR_ERROR_H

#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "kelvar.framework/source/tables/t_types.h"

namespace tavor {

// An error, or none. Converts to true when it is an error.
class [[nodiscard]] Error {
 public:
  Error() = default;
  explicit Error(std::string text, int32_t code = HOST_RESULT_ERROR, const char* file = __builtin_FILE(),
                 int32_t line = __builtin_LINE())
      : code_(code), line_(line), file_(file), text_(std::move(text)) {}

  // Takes what came over the boundary, and frees its text.
  static Error Adopt(HostResult result);

  // For the other side of the boundary, which frees the text.
  HostResult ToHost() const;

  explicit operator bool() const { return code_ != HOST_RESULT_OK; }
  int32_t Code() const { return code_; }
  const std::string& Text() const { return text_; }
  const char* File() const { return file_; }
  int32_t Line() const { return line_; }

 private:
  static std::string DefaultText(int32_t code) {
    switch (code) {
      case HOST_RESULT_OUT_OF_MEMORY:
        return "out of memory";
      case HOST_RESULT_NOT_FOUND:
        return "not found";
      case HOST_RESULT_ILLEGAL_ARGUMENT:
        return "illegal argument";
      case HOST_RESULT_NOT_OFFERED:
        return "the host does not offer this operation";
      default:
        return "the operation failed";
    }
  }

  int32_t code_ = HOST_RESULT_OK;
  int32_t line_ = 0;
  const char* file_ = nullptr;
  std::string text_;
};

// A value or an error.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)) {}
  Result(tavor::Error error) : value_(std::move(error)) {}

  explicit operator bool() const { return value_.index() == 0; }
  T& operator*() { return std::get<0>(value_); }
  const T& operator*() const { return std::get<0>(value_); }
  T* operator->() { return &std::get<0>(value_); }
  tavor::Error Failure() const { return value_.index() ? std::get<1>(value_) : tavor::Error(); }

 private:
  std::variant<T, tavor::Error> value_;
};

}  // namespace tavor

// A text can fail to be read, and an error has a text: each header completes the other.
#include "kelvar/string.h"

namespace tavor {

inline Error Error::Adopt(HostResult result) {
  const String text = String::Adopt(result.text);
  Error error;
  if (result.code == HOST_RESULT_OK) return error;
  error.code_ = result.code;
  error.line_ = result.line;
  error.file_ = result.file;
  int64_t size = 0;
  const char* utf8 = text.GetUtf8(&size);
  error.text_.assign(utf8, size_t(size));
  if (error.text_.empty()) error.text_ = DefaultText(result.code);
  return error;
}

inline HostResult Error::ToHost() const {
  if (!*this) return {};
  return {code_, line_, file_, String::FromUtf8(text_.data(), int64_t(text_.size())).Release()};
}

}  // namespace tavor

#endif
