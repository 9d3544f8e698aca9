// The parser's format texts and keyword lists, read while the module is compiled.
#ifndef KIT_I_FORMAT_H
#define KIT_I_FORMAT_H

#include <Python.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "kit/i_valueletters.h"

namespace qlx {

// A text as a template argument.
template <size_t Size>
struct FixedString {
  char text[Size];
  // Implicit, so that a literal can stand as the argument.
  constexpr FixedString(const char (&literal)[Size]) { std::copy_n(literal, Size, text); }
  constexpr std::string_view View() const { return {text, Size - 1}; }
};

// Where a character stands, or the text's size. The standard library's search is no constant for the text of
// a template argument when the sanitizers are on.
constexpr size_t PlaceOf(char wanted, std::string_view text) {
  size_t at = 0;
  while (at < text.size() && text[at] != wanted) ++at;
  return at;
}

// One target of a format: a letter with its suffixes.
struct FormatItem {
  char letter = 0;
  bool typed = false;   // followed by '!': a type object goes ahead of the target
  bool orNone = false;  // followed by 'N'
  bool optional = false;
  bool nested = false;                     // in a sequence, whose own code runs
  int keyword = 0;                         // the place in the keyword list
  ValueLetter form = ValueLetter::kCount;  // of 'V'
};

// What stands behind 'V', and how many characters it takes.
struct VectorForm {
  ValueLetter form;
  size_t length;
};

constexpr VectorForm ReadVectorForm(std::string_view suffix) {
  size_t at = 0;
  const auto take = [&](char wanted) { return at < suffix.size() && suffix[at] == wanted && ++at; };
  const bool color = take('C');
  if (!take('4') && !take('3')) {
    take('6');
    return {color ? ValueLetter::kColor : ValueLetter::kVector, at};
  }
  const bool wide = take('6') || !take('3');
  if (color) return {wide ? ValueLetter::kColorA : ValueLetter::kColorA32, at};
  return {wide ? ValueLetter::kVector4d : ValueLetter::kVector4d32, at};
}

// A format of at most 24 targets. `fault` tells what the parser would refuse in it.
struct ParsedFormat {
  enum Fault {
    kNone,
    kUnknownLetter,
    kParentheses,
    kOptionalTwice,
    kOptionalNested,
    kTooMany,
    kNested,         // inside parentheses the parser counts letters only, and keeps no object
    kSkippedSuffix,  // a call can't step over '4' or a suffix of 'V': optional ones are last
  };

  std::array<FormatItem, 24> items{};
  size_t targets = 0;
  int keywords = 0;
  Fault fault = kNone;
  char faulty = 0;

  constexpr explicit ParsedFormat(std::string_view format) {
    int depth = 0;
    bool optional = false;
    for (size_t at = 0; at < format.size() && fault == kNone;) {
      const char letter = format[at++];
      if (letter == ':' || letter == ';') break;
      if (letter == '|') {
        if (optional || depth > 0) Refuse(optional ? kOptionalTwice : kOptionalNested, letter);
        optional = true;
      } else if (letter == '(') {
        if (depth++ == 0) ++keywords;
      } else if (letter == ')') {
        if (--depth < 0) Refuse(kParentheses, letter);
      } else {
        at += TakeLetter(letter, format.substr(at), depth, optional);
      }
    }
    if (depth > 0) Refuse(kParentheses, '(');
  }

  constexpr bool Has(std::string_view letters) const {
    for (size_t i = 0; i < targets; ++i)
      if (letters.find(items[i].letter) != letters.npos) return true;
    return false;
  }

 private:
  constexpr void Refuse(Fault why, char what) {
    fault = why;
    faulty = what;
  }

  // The letter's target; answers how many characters its suffixes take.
  constexpr size_t TakeLetter(char letter, std::string_view rest, int depth, bool optional) {
    if (targets == items.size()) {
      Refuse(kTooMany, letter);
      return 0;
    }
    FormatItem item{letter, false, false, optional, depth > 0, depth == 0 ? keywords++ : keywords - 1};
    size_t length = 0;
    if (letter == 'A' || letter == 'O' || letter == 'P') {
      item.typed = rest.starts_with('!');
      item.orNone = rest.starts_with("!N");
      length = size_t(item.typed) + size_t(item.orNone);
      // Without '!' the letters of atoms and pictures have no target that a caller could use.
      if (letter != 'O' && !item.typed) Refuse(kUnknownLetter, letter);
    } else if (letter == 'C') {
      item.orNone = rest.starts_with('N');
      length = item.orNone;
    } else if (letter == 'V') {
      const VectorForm form = ReadVectorForm(rest);
      item.form = form.form;
      length = form.length;
    } else if (std::string_view("#$%46MBGILQTUXbcdfhijlrv").find(letter) == std::string_view::npos) {
      Refuse(kUnknownLetter, letter);
    }
    // What a sequence gave is released behind its letter: nothing that is only borrowed can stand there.
    const bool counted = std::string_view("#$%46").find(letter) == std::string_view::npos &&
                         PlaceOf('C', rest.substr(0, length)) == length;
    const bool borrowed = std::string_view("ACOPX").find(letter) != std::string_view::npos;
    if (depth > 0 && (!counted || borrowed)) Refuse(kNested, letter);
    const bool more = length < rest.size() && rest[length] != ':' && rest[length] != ';';
    if (optional && more && ((letter == 'V' && length > 0) || letter == '4')) Refuse(kSkippedSuffix, letter);
    items[targets++] = item;
    return length;
  }
};

// An entry of a keyword list: the name, and with "name=3" the preset of an optional number.
struct KeywordText {
  std::string_view name, preset;

  constexpr explicit KeywordText(std::string_view text) : name(text.substr(0, PlaceOf('=', text))) {
    if (name.size() < text.size()) preset = text.substr(name.size() + 1);
  }
};

// The name alone, with a zero behind it.
template <FixedString Text>
struct KeywordName {
  static constexpr KeywordText kText{Text.View()};
  static constexpr size_t kSize = kText.name.size();
  static constexpr std::array<char, kSize + 1> kName = [] {
    std::array<char, kSize + 1> name{};
    std::copy_n(Text.text, kSize, name.begin());
    return name;
  }();
};

// A preset: a decimal number, or "true" and "false".
struct Preset {
  bool valid = false;
  bool whole = true;  // without a point
  double number = 0;
  int64_t integer = 0;

  constexpr explicit Preset(std::string_view text) {
    if (text == "true" || text == "false") {
      valid = true;
      number = double(integer = text == "true");
      return;
    }
    const bool negative = text.starts_with('-');
    if (negative) text.remove_prefix(1);
    double scale = 0;  // of the next digit behind the point
    for (const char digit : text) {
      if (digit == '.' && scale == 0) {
        scale = 1;
        continue;
      }
      if (digit < '0' || digit > '9') return;
      valid = true;
      if (scale == 0) integer = integer * 10 + (digit - '0');
      number = scale == 0 ? double(integer) : number + (scale /= 10) * (digit - '0');
    }
    if (scale != 0) whole = false;
    if (negative) number = -number, integer = -integer;
  }
};

}  // namespace qlx

#endif
