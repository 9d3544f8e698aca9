// The checked front of the argument parser: a format and its keywords, held against the C++ types
// that receive the values while the module is compiled. A wrong target does not compile.
#ifndef KIT_I_ARGUMENTS_H
#define KIT_I_ARGUMENTS_H

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>
#include <utility>

#include "kelvar.framework/source/tables/t_values.h"
#include "kit/i_format.h"
#include "kit/i_getargs.h"
#include "kit/i_present.h"

class GeData;
struct BaseThread;

namespace qlx {

// Faults of a binding. They are declared only: the compiler's message names the template with the
// host method, the format, and the letter and parameter that are at odds.
template <auto HostMethod, FixedString Format, ParsedFormat::Fault Why, char Letter>
struct FormatIsWrong;
template <auto HostMethod, FixedString Format, size_t Letters, size_t Parameters>
struct FormatHasAnotherNumberOfLetters;
template <auto HostMethod, FixedString Format, size_t Letters, size_t Keywords>
struct FormatHasAnotherNumberOfKeywords;
template <auto HostMethod, FixedString Format, size_t Position, char Letter, class Parameter>
struct LetterDoesNotFitParameter;
template <auto HostMethod, FixedString Keyword, char Letter>
struct PresetIsNoNumberOfThisLetter;
template <auto HostMethod, FixedString Keyword>
struct KeywordStandsTwice;

// A parameter that takes a Python object of the record's own type, by the letter "O!".
template <class T>
concept WrapperRecord = requires(T record) {
  { record.ob_base } -> std::convertible_to<PyObject>;
};

// The Python type of a record that "O!" takes; specialised like TypeOf.
template <WrapperRecord Record>
struct RecordType;

template <class T>
struct Target {
  using Type = T;
};

// The type that the parser writes for a letter.
template <FormatItem Item>
constexpr auto TargetOf() {
  constexpr char letter = Item.letter;
  if constexpr (letter == 'b')
    return Target<uint8_t>{};
  else if constexpr (letter == 'B')
    return Target<int8_t>{};
  else if constexpr (letter == 'c')
    return Target<char>{};
  else if constexpr (letter == 'h')
    return Target<int16_t>{};
  else if constexpr (letter == 'j')
    return Target<uint16_t>{};
  else if constexpr (letter == 'i')
    return Target<int32_t>{};
  else if constexpr (letter == 'I')
    return Target<uint32_t>{};
  else if constexpr (letter == 'l')
    return Target<int64_t>{};
  else if constexpr (letter == 'L' || letter == 'v')
    return Target<uint64_t>{};
  else if constexpr (letter == 'd' || letter == 'f' || letter == 'r')
    return Target<double>{};
  else if constexpr (letter == '$')
    return Target<String>{};
  else if constexpr (letter == '%')
    return Target<Filename>{};
  else if constexpr (letter == '4')
    return Target<Matrix32>{};
  else if constexpr (letter == '6' || letter == 'M')
    return Target<Matrix>{};
  else if constexpr (letter == 'A')
    return Target<QLXAtom*>{};
  else if constexpr (letter == 'C')
    return Target<BaseContainer*>{};
  else if constexpr (letter == 'G')
    return Target<GeData>{};
  else if constexpr (letter == 'O')
    return Target<PyObject*>{};
  else if constexpr (letter == 'P')
    return Target<BaseBitmap*>{};
  else if constexpr (letter == 'Q')
    return Target<Quaternion>{};
  else if constexpr (letter == 'T')
    return Target<BaseTime>{};
  else if constexpr (letter == 'U')
    return Target<Uuid>{};
  else if constexpr (letter == 'X')
    return Target<BaseThread*>{};
  else if constexpr (letter == '#')
    return Target<GadgetArg>{};
  else if constexpr (Item.form == ValueLetter::kVector)
    return Target<Vector>{};
  else if constexpr (Item.form == ValueLetter::kVector4d)
    return Target<Vector4d>{};
  else if constexpr (Item.form == ValueLetter::kVector4d32)
    return Target<Vector4d32>{};
  else if constexpr (Item.form == ValueLetter::kColor)
    return Target<Color>{};
  else if constexpr (Item.form == ValueLetter::kColorA)
    return Target<ColorA>{};
  else
    return Target<ColorA32>{};
}

// Whether a parameter can be given what the letter's target holds.
template <FormatItem Item, class Parameter>
constexpr bool Fits() {
  using T = typename decltype(TargetOf<Item>())::Type;
  using Plain = std::remove_cvref_t<Parameter>;
  if constexpr (std::is_rvalue_reference_v<Parameter>) return false;
  constexpr bool writable =
      std::is_lvalue_reference_v<Parameter> && !std::is_const_v<std::remove_reference_t<Parameter>>;
  if constexpr (writable)
    return false;
  else if constexpr (std::is_arithmetic_v<T>)
    return std::same_as<Plain, T> || (Item.letter == 'b' && std::same_as<Plain, bool>);
  else if constexpr (Item.letter == 'A')
    return std::is_pointer_v<Plain> &&
           std::derived_from<std::remove_cv_t<std::remove_pointer_t<Plain>>, QLXAtom>;
  else if constexpr (Item.letter == 'P')
    return std::is_pointer_v<Plain> && std::same_as<std::remove_cv_t<std::remove_pointer_t<Plain>>, BaseBitmap>;
  else if constexpr (Item.letter == 'C')
    return std::is_pointer_v<Plain> &&
           std::same_as<std::remove_cv_t<std::remove_pointer_t<Plain>>, BaseContainer>;
  else if constexpr (Item.letter == 'O' && Item.typed)
    return std::is_pointer_v<Plain> && WrapperRecord<std::remove_pointer_t<Plain>>;
  else if constexpr (std::is_pointer_v<Plain> && !std::is_pointer_v<T>)
    return std::same_as<Plain, const T*>;
  else
    return std::same_as<Plain, T>;
}

// One target with what it takes to fill it and to hand it on.
template <FormatItem Item, class Parameter, FixedString Keyword>
struct Argument {
  using T = typename decltype(TargetOf<Item>())::Type;
  using Plain = std::remove_cvref_t<Parameter>;

  // No time that is given has a denominator below zero.
  static constexpr bool kNullWhereNotGiven =
      std::same_as<T, BaseTime> && Item.optional && std::is_pointer_v<Plain>;

  T value{};

  // What isn't given: a preset, or zero and its kin.
  Argument() {
    if constexpr (std::same_as<T, Matrix>) value = {{}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    if constexpr (std::same_as<T, Quaternion>) value.w = 1;
    if constexpr (std::same_as<T, BaseTime>) value.denominator = kNullWhereNotGiven ? -1 : 1;
    if constexpr (std::is_arithmetic_v<T>) {
      constexpr Preset preset(KeywordName<Keyword>::kText.preset);
      if constexpr (preset.valid) value = std::is_floating_point_v<T> ? T(preset.number) : T(preset.integer);
    }
  }

  // The type that a letter with '!' asks for.
  static PyTypeObject* Type() {
    using Pointed = std::remove_cv_t<std::remove_pointer_t<Plain>>;
    if constexpr (Item.letter == 'O')
      return &RecordType<Pointed>::Get();
    else
      return &TypeOf<Pointed>::Get();
  }

  // What the parser gets for it.
  auto Slots() {
    if constexpr (Item.typed)
      return std::make_tuple(Type(), &value);
    else
      return std::make_tuple(&value);
  }

  // What the host method gets.
  decltype(auto) Pass() {
    if constexpr (std::is_pointer_v<Plain> && Item.letter == 'A')
      return static_cast<Plain>(value);
    else if constexpr (std::is_pointer_v<Plain> && Item.letter == 'O' && Item.typed)
      return reinterpret_cast<Plain>(value);
    else if constexpr (kNullWhereNotGiven)
      return value.denominator < 0 ? nullptr : static_cast<const T*>(&value);
    else if constexpr (std::is_pointer_v<Plain> && !std::is_pointer_v<T>)
      return static_cast<const T*>(&value);
    else if constexpr (std::same_as<Plain, bool>)
      return value != 0;
    else
      return static_cast<const T&>(value);
  }
};

template <class... Types>
struct TypeList {
  static constexpr size_t kSize = sizeof...(Types);
};

// The arguments of one call. `HostMethod` only names the binding in the compiler's messages.
template <auto HostMethod, class Parameters, FixedString Format, FixedString... Keywords>
class Arguments;

template <auto HostMethod, class... Parameters, FixedString Format, FixedString... Keywords>
class Arguments<HostMethod, TypeList<Parameters...>, Format, Keywords...> {
 public:
  static constexpr ParsedFormat kFormat{Format.View()};

 private:
  static constexpr size_t kCount = sizeof...(Parameters);

  // The keyword of a target; all targets of a nested sequence share theirs.
  template <size_t Position>
  static constexpr auto KeywordAt() {
    return std::get<size_t(kFormat.items[Position].keyword)>(std::make_tuple(Keywords...));
  }

  template <size_t Position, class Parameter>
  static constexpr bool CheckLetter() {
    constexpr FormatItem item = kFormat.items[Position];
    if constexpr (!Fits<item, Parameter>())
      (void)sizeof(LetterDoesNotFitParameter<HostMethod, Format, Position, item.letter, Parameter>);
    constexpr KeywordText keyword = KeywordName<KeywordAt<Position>()>::kText;
    using T = typename decltype(TargetOf<item>())::Type;
    if constexpr (!keyword.preset.empty()) {
      constexpr Preset preset(keyword.preset);
      constexpr bool fits = item.optional && preset.valid && std::is_arithmetic_v<T> &&
                            (preset.whole || std::is_floating_point_v<T>)&&InRangeOf<T>(preset);
      if constexpr (!fits)
        (void)sizeof(PresetIsNoNumberOfThisLetter<HostMethod, KeywordAt<Position>(), item.letter>);
    }
    return true;
  }

  template <class T>
  static constexpr bool InRangeOf(const Preset& preset) {
    if constexpr (!std::is_integral_v<T>)
      return true;
    else
      return std::in_range<std::conditional_t<std::same_as<T, char>, int8_t, T>>(preset.integer);
  }

  template <FixedString Keyword>
  static constexpr bool CheckKeyword() {
    constexpr size_t same =
        (size_t(KeywordText(Keyword.View()).name == KeywordText(Keywords.View()).name) + ... + 0);
    if constexpr (same > 1) (void)sizeof(KeywordStandsTwice<HostMethod, Keyword>);
    return true;
  }

  static constexpr bool Check() {
    if constexpr (kFormat.fault != ParsedFormat::kNone) {
      (void)sizeof(FormatIsWrong<HostMethod, Format, kFormat.fault, kFormat.faulty>);
    } else if constexpr (kFormat.targets != kCount) {
      (void)sizeof(FormatHasAnotherNumberOfLetters<HostMethod, Format, kFormat.targets, kCount>);
    } else if constexpr (size_t(kFormat.keywords) != sizeof...(Keywords)) {
      (void)sizeof(
          FormatHasAnotherNumberOfKeywords<HostMethod, Format, size_t(kFormat.keywords), sizeof...(Keywords)>);
    } else {
      (void)(CheckKeyword<Keywords>() && ... && true);
      [&]<size_t... I>(std::index_sequence<I...>) { (void)(CheckLetter<I, Parameters>() && ... && true); }
      (std::make_index_sequence<kCount>());
    }
    return true;
  }
  static_assert(Check());

  // Whether the conversion of a letter behind this one may run a script's code.
  static constexpr bool RunsPythonBehind(size_t position) {
    for (size_t i = position + 1; i < kCount; ++i)
      if (kFormat.items[i].nested || qlx::PlaceOf(kFormat.items[i].letter, "ACOPXQTM64") == 10) return true;
    return false;
  }

  // Resolves the host object of a letter once more; false with an exception when it has gone.
  template <size_t Position, bool Needed>
  bool ResolveAgain(PyObject* args) {
    constexpr FormatItem item = kFormat.items[Position];
    auto& value = std::get<Position>(arguments_).value;
    if constexpr ((item.letter == 'A' || item.letter == 'P' || item.letter == 'C') && Needed) {
      using Host = std::remove_pointer_t<std::remove_reference_t<decltype(value)>>;
      return !value || Present<Host>::Get(Given<size_t(item.keyword)>(args), value);
    } else if constexpr (item.letter == 'X' && Needed) {
      return !value || ConvertLetter(ValueLetter::kThread, Given<size_t(item.keyword)>(args), &value) ==
                           Conversion::kStored;
    } else if constexpr (item.letter == '#' && Needed) {
      return !value.gadget || ConvertLetter(ValueLetter::kGadget, Given<size_t(item.keyword)>(args),
                                            &value.gadget) == Conversion::kStored;
    } else {
      return true;
    }
  }

  template <class Sequence>
  struct Storage;
  template <size_t... I>
  struct Storage<std::index_sequence<I...>> {
    using Type = std::tuple<Argument<kFormat.items[I], Parameters, KeywordAt<I>()>...>;
  };

 public:
  static constexpr const char* kKeywords[] = {KeywordName<Keywords>::kName.data()..., nullptr};

  Arguments() = default;
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;
  ~Arguments() {
    for (PyObject* value : given_) Py_XDECREF(value);
    Py_XDECREF(keywordsCopy_);
  }

  // False with an exception. The targets borrow from the call's tuple and from what is held here.
  bool Parse(PyObject* args, PyObject* keywords) {
    // Letters that copy a value need nobody to hold it.
    if constexpr (kFormat.Has("ACOPX#"))
      if (keywords && !HoldKeywords(keywords, keywordsCopy_, kKeywords, given_.data())) return false;
    const bool parsed = std::apply(
        [&](auto&... argument) {
          return std::apply(
              [&](auto*... slots) {
                return ParseTupleAndKeywords(args, keywords, Format.text, kKeywords, slots...);
              },
              std::tuple_cat(argument.Slots()...));
        },
        arguments_);
    if (!parsed) return false;
    // These letters may be taken although their value could not be had.
    if constexpr (kFormat.Has("#$%"))
      if (PyErr_Occurred()) return false;
    // A script's code behind a letter may have destroyed the host object that it gave.
    return [&]<size_t... I>(std::index_sequence<I...>) {
      return (ResolveAgain<I, RunsPythonBehind(I)>(args) && ...);
    }
    (std::make_index_sequence<kCount>());
  }

  // False with an exception when one of the host objects has gone since.
  bool CheckAlive(PyObject* args) {
    return [&]<size_t... I>(std::index_sequence<I...>) { return (ResolveAgain<I, true>(args) && ...); }
    (std::make_index_sequence<kCount>());
  }

  // What the caller gave for a keyword, borrowed; null when it gave nothing.
  template <size_t Keyword>
  PyObject* Given(PyObject* args) const {
    return Py_ssize_t(Keyword) < PyTuple_GET_SIZE(args) ? PyTuple_GET_ITEM(args, Py_ssize_t(Keyword))
                                                        : given_[Keyword];
  }

  // How many arguments were given, by position and by name.
  Py_ssize_t CountGiven(PyObject* args) const {
    Py_ssize_t count = PyTuple_GET_SIZE(args);
    for (const PyObject* value : given_) count += value != nullptr;
    return count;
  }

  static constexpr bool StartsWithTypeId() {
    if constexpr (kCount == 0)
      return false;
    else
      return kFormat.items[0].letter == 'i' && KeywordName<KeywordAt<0>()>::kText.name == "type";
  }

  template <class Function>
  decltype(auto) Apply(Function&& function) {
    return std::apply([&](auto&... argument) -> decltype(auto) { return function(argument.Pass()...); },
                      arguments_);
  }

  // The target of the keyword; an unknown one does not compile.
  template <FixedString Keyword>
  auto& At() {
    constexpr size_t place = PlaceOf<Keyword>();
    return std::get<place>(arguments_);
  }

  template <FixedString Keyword>
  static constexpr size_t PlaceOf() {
    constexpr std::string_view names[] = {KeywordName<Keywords>::kText.name..., ""};
    for (size_t i = 0; i < kCount; ++i)
      if (names[kFormat.items[i].keyword] == KeywordName<Keyword>::kText.name) return i;
    return kCount;
  }

  auto& All() { return arguments_; }

 private:
  typename Storage<std::make_index_sequence<kCount>>::Type arguments_;
  std::array<PyObject*, sizeof...(Keywords)> given_{};  // by name
  PyObject* keywordsCopy_ = nullptr;
};

}  // namespace qlx

#endif
