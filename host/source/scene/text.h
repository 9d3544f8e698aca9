// A text in one word, which its copies share.
#ifndef HOST_SCENE_TEXT_H
#define HOST_SCENE_TEXT_H

#include <string_view>
#include <utility>

#include "tables/values.h"

namespace host {

class Text {
 public:
  Text() = default;
  explicit Text(std::string_view text) : word_(MakeString(text)) {}
  explicit Text(const HostString* text) : word_(Share(text)) {}
  Text(const Text& other) : word_(Share(&other.word_)) {}
  Text(Text&& other) noexcept : word_(std::exchange(other.word_, {})) {}
  Text& operator=(Text other) noexcept {
    std::swap(word_, other.word_);
    return *this;
  }
  Text& operator=(std::string_view text) { return *this = Text(text); }
  ~Text() { Drop(word_); }

  operator std::string_view() const { return View(&word_); }
  const HostString& Word() const { return word_; }

 private:
  HostString word_{};
};

}  // namespace host

#endif
