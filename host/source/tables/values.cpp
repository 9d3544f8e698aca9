#include "tables/values.h"

#include <atomic>
#include <cstring>
#include <new>
#include <string>

namespace host {
namespace {

// An immutable text, shared by counting. Its bytes and a zero follow the record.
struct SharedText {
  std::atomic<int64_t> owners{1};
  size_t size;

  explicit SharedText(std::string_view text) : size(text.size()) {
    if (size) std::memcpy(Bytes(), text.data(), size);
    Bytes()[size] = 0;
  }
  char* Bytes() { return reinterpret_cast<char*>(this + 1); }
};

void* MakeWord(std::string_view text) {
  if (text.empty()) return nullptr;
  return new (::operator new(sizeof(SharedText) + text.size() + 1)) SharedText(text);
}

std::string_view ViewWord(void* word) {
  if (!word) return "";
  auto* text = static_cast<SharedText*>(word);
  return {text->Bytes(), text->size};
}

void* ShareWord(void* word) {
  if (word) static_cast<SharedText*>(word)->owners.fetch_add(1, std::memory_order_relaxed);
  return word;
}

void DropWord(void*& word) {
  auto* text = static_cast<SharedText*>(word);
  word = nullptr;
  if (!text || text->owners.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  text->~SharedText();
  ::operator delete(text);
}

}  // namespace

HostString MakeString(std::string_view text) { return {MakeWord(text)}; }

HostFilename MakeFilename(std::string_view path) {
  if (path.find('\0') != path.npos) return {};
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  return {MakeWord(path)};
}

std::string_view View(const HostString* text) { return ViewWord(text ? text->word : nullptr); }
std::string_view View(const HostFilename* path) { return ViewWord(path ? path->word : nullptr); }

HostString Share(const HostString* text) { return {ShareWord(text ? text->word : nullptr)}; }
HostFilename Share(const HostFilename* path) { return {ShareWord(path ? path->word : nullptr)}; }

void Drop(HostString& text) { DropWord(text.word); }
void Drop(HostFilename& path) { DropWord(path.word); }

HostResult Failure(std::string_view text, int32_t code, const char* file, int line) {
  return {code, line, file, MakeString(text)};
}

HostResult Failure(std::string_view what, std::error_code reason, const char* file, int line) {
  const int32_t code = reason == std::errc::no_such_file_or_directory ? HOST_RESULT_NOT_FOUND
                       : reason == std::errc::not_enough_memory       ? HOST_RESULT_OUT_OF_MEMORY
                                                                      : HOST_RESULT_ERROR;
  return Failure(std::string(what) + ": " + reason.message(), code, file, line);
}

}  // namespace host
