// Texts and paths of the fake host, and the ledger that counts them.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "fake_application.h"

namespace {

Ledger* ledger = nullptr;

template <class Word>
const std::string& Value(const Word* self) {
  static const std::string empty;
  return self && self->word ? *static_cast<const std::string*>(self->word) : empty;
}

template <class Word>
constexpr const char* kKind = std::is_same_v<Word, HostString> ? "String" : "Filename";

template <class Word>
Word Make(std::string text) {
  if (!ledger->Allowed()) return {};
  Word word{new std::string(std::move(text))};
  ledger->Add(kKind<Word>, word.word);
  return word;
}

template <class Word>
void Destroy(Word* self) {
  if (self->word && ledger->Remove(kKind<Word>, self->word)) delete static_cast<std::string*>(self->word);
  self->word = nullptr;
}

// The length of the UTF-8 sequence at `at`, 0 when it is none.
size_t SequenceLength(std::string_view text, size_t at) {
  const auto byte = [&](size_t i) { return at + i < text.size() ? uint8_t(text[at + i]) : 0; };
  const uint8_t lead = byte(0);
  const size_t length = lead < 0x80   ? 1
                        : lead < 0xC2 ? 0
                        : lead < 0xE0 ? 2
                        : lead < 0xF0 ? 3
                        : lead < 0xF5 ? 4
                                      : 0;
  for (size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 0;
  const bool surrogate = lead == 0xED && byte(1) >= 0xA0;
  const bool overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
  return surrogate || overlong || (lead == 0xF4 && byte(1) >= 0x90) ? 0 : length;
}

std::string Repaired(std::string_view text) {
  std::string repaired;
  for (size_t at = 0; at < text.size();) {
    const size_t length = SequenceLength(text, at);
    repaired += length ? text.substr(at, length) : std::string_view("\xEF\xBF\xBD");
    at += length ? length : 1;
  }
  return repaired;
}

HostResult Decode(const void* bytes, int64_t size, HostString* result) {
  std::string_view text(static_cast<const char*>(bytes), size_t(size));
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  for (size_t at = 0, length; at < text.size(); at += length) {
    length = SequenceLength(text, at);
    if (length) continue;
    const auto line = 1 + std::count(text.begin(), text.begin() + ptrdiff_t(at), '\n');
    return {HOST_RESULT_ERROR, 0, nullptr, Make<HostString>("not UTF-8 in line " + std::to_string(line))};
  }
  *result = Make<HostString>(std::string(text));
  return {};
}

HostResult Append(HostFilename* self, const HostString* name) {
  const std::string& component = Value(name);
  if (component.empty() || component == "." || component == ".." || component.find('/') != std::string::npos)
    return {HOST_RESULT_ILLEGAL_ARGUMENT, 0, nullptr, Make<HostString>("not a component: " + component)};
  auto whole = Make<HostFilename>(Value(self) + "/" + component);
  std::swap(*self, whole);
  Destroy(&whole);
  return {};
}

}  // namespace

void Ledger::Add(const char* kind, const void* value) {
  const std::lock_guard lock(mutex_);
  live_[value] = kind;
}

bool Ledger::Remove(const char* kind, const void* value) {
  const std::lock_guard lock(mutex_);
  const auto found = live_.find(value);
  const bool known = found != live_.end() && !std::strcmp(found->second, kind);
  EXPECT_TRUE(known) << "a " << kind << " came back that was not out";
  if (known) live_.erase(found);
  return known;
}

std::string Ledger::Left() const {
  const std::lock_guard lock(mutex_);
  std::string left;
  for (const auto& [value, kind] : live_) {
    left += kind;
    if (*kind == 'S' || *kind == 'F') left += " '" + *static_cast<const std::string*>(value) + "'";
    left += "\n";
  }
  return left;
}

bool Ledger::Allowed() {
  const std::lock_guard lock(mutex_);
  if (failAt_ < 0 || failAt_-- > 0) return true;
  failAt_ = kDone;
  return false;
}

void FakeApplication::InstallValues() {
  ::ledger = &ledger;
  fake::string::FromUtf8 = [](const char* utf8, int64_t size) {
    return Make<HostString>(Repaired({utf8, size_t(size)}));
  };
  fake::string::Copy = [](const HostString* self) {
    return self->word ? Make<HostString>(Value(self)) : HostString{};
  };
  fake::string::Destroy = Destroy<HostString>;
  fake::string::GetUtf8 = [](const HostString* self, int64_t* size) {
    if (size) *size = int64_t(Value(self).size());
    return Value(self).c_str();
  };
  fake::string::Decode = Decode;
  fake::string::FromBytes = [](const char* bytes, int64_t size) {
    return Make<HostString>({bytes, size_t(size)});
  };

  fake::filename::Construct = [](HostFilename* self) { self->word = nullptr; };
  fake::filename::Copy = [](const HostFilename* self) { return Make<HostFilename>(Value(self)); };
  fake::filename::CopyFrom = [](HostFilename* self, const HostFilename* other) {
    auto copy = Make<HostFilename>(Value(other));
    std::swap(*self, copy);
    Destroy(&copy);
    return int32_t(self->word != nullptr);
  };
  fake::filename::Destroy = Destroy<HostFilename>;
  fake::filename::FromString = [](const HostString* text) { return Make<HostFilename>(Value(text)); };
  fake::filename::GetString = [](const HostFilename* self) { return Make<HostString>(Value(self)); };
  fake::filename::GetDirectory = [](const HostFilename* self) {
    return Make<HostFilename>(std::filesystem::path(Value(self)).parent_path());
  };
  fake::filename::GetFileString = [](const HostFilename* self) {
    return Make<HostString>(std::filesystem::path(Value(self)).filename());
  };
  fake::filename::Append = Append;
  fake::filename::Content = [](const HostFilename* self) { return int32_t(!Value(self).empty()); };
}

Text::Text(std::string_view text) : word_(Make<HostString>(std::string(text))) {}
Text::~Text() { Destroy(&word_); }
Path::Path(std::string_view text) : word_(Make<HostFilename>(std::string(text))) {}
Path::~Path() { Destroy(&word_); }

std::string View(const HostString* text) { return Value(text); }

std::string Take(HostString text) {
  const std::string value = Value(&text);
  Destroy(&text);
  return value;
}

std::string Take(HostFilename path) {
  const std::string value = Value(&path);
  Destroy(&path);
  return value;
}

std::string TakeError(HostResult result) {
  const std::string text = Take(result.text);
  if (result.code == HOST_RESULT_OK) {
    EXPECT_TRUE(text.empty() && !result.line && !result.file) << text;
    return "";
  }
  return text.empty() ? "error " + std::to_string(result.code) : text;
}
