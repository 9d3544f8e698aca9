// Calls of the argument parser with any format, names and arguments: it does what a second, plain
// implementation of its rules does.

#include <Python.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "../unit/module/getargs_support.h"
#include "getargs_reference.h"
#include "interpreter/lib_python_link.h"
#include "kit/i_cpython.h"
#include "python_interpreter.h"

namespace {

using getargs::Host;
using getargs::Target;

constexpr size_t kSlots = 64;
constexpr size_t kFormatBytes = 40;

// Objects of every kind; those of GOOD fit the form that is their key.
constexpr const char* kObjects = R"python(
import sys, warnings
warnings.simplefilter('ignore')
class Thing:
    def __repr__(self): return 'thing'
class Special(Thing): pass
class Str(str): pass
class Hostile(str):
    def __eq__(self, other): raise KeyError('compared')
    __hash__ = str.__hash__
class Number(int):
    def __int__(self): return 4
class Int:
    def __init__(self, result): self.result = result
    def __int__(self):
        if isinstance(self.result, Exception): raise self.result
        return self.result
    def __str__(self):
        if isinstance(self.result, Exception): raise self.result
        return 'int'
class Float:
    def __float__(self): return -1.0
class Index:
    def __index__(self): return 3
class Bytes:
    def __init__(self, data): self.bytes = data
class Items:
    def __init__(self, size, *items): self.size, self.items = size, items
    def __len__(self):
        if isinstance(self.size, Exception): raise self.size
        return self.size
    def __getitem__(self, i): return self.items[i]
OBJECTS = [
    None, True, False, 0, 1, -1, 255, 256, 2**15, -2**15 - 1, 2**16, 2**31, -2**31 - 1, 2**32 - 1, 2**63, -2**63,
    -2**63 - 1, 2**64 - 1, 2**64, 2**70, 2.5, -1.0, -1.5, 1e300, float('inf'), float('nan'), Number(7), Int(5),
    Int('x'), Int(True), Int(ValueError('no')), Float(), Index(), '', 'a', 'ab', '\xe9', '\u20ac', '\ud800', 'a\0b',
    'x\udc80', Str('s'), b'', b'a', b'ab', [], (), {}, {1: 2}, range(2), Thing(), Special(), Thing, Bytes(b'x' * 16),
    Bytes(b'x' * 15), Bytes(None), Items(1), Items(2, 1, 2), Items(OSError('len')), atom, bitmap, dead_atom,
    dead_bitmap,
] + [Value(kind, 3, dead) for kind in KINDS for dead in (False, True)]
GOOD = {
    '#': [5, -1, 2**31, Value('Gadget', 9), Value('Gadget', 9, True)], '$': ['a', '\xe9', Thing(), '\ud800'],
    '%': ['a', Value('Url', 2), '\ud800'], 'M': [Value('Matrix', 1)], 'Q': [Value('Quaternion', 1)],
    'T': [Value('BaseTime', 1)], 'G': [Value('GeData', 1)], 'C': [Value('Container', 1), None],
    'X': [Value('Thread', 1), None], 'A': [atom, None], 'P': [bitmap, None], 'O': [Thing(), Special(), None],
    'V': [Value(kind, 4) for kind in ('Vector', 'Vector4d', 'Vector4d32', 'Color', 'ColorA', 'ColorA32')],
    'U': [Bytes(b'\0' * 16)], 'c': ['a', '\xe9'], 'd': [2.5, -1, Float()], 'i': [3, -1, True, 7.5, Int(9)],
}
GOOD['4'] = GOOD['6'] = GOOD['M']
GOOD['f'] = GOOD['r'] = GOOD['d']
for letter in 'BILbhjlv': GOOD[letter] = GOOD['i']
KEYS = [Str('b'), Hostile('a'), 1, None, 'x', '\xe9', '\ud800', 'a\0', 'x\0y', '', b'a', Str('\udc80'), 'c' * 300]
TYPES = {'A': type(atom), 'O': Thing, 'P': type(bitmap)}
HOSTS = {id(atom): 71, id(dead_atom): 0, id(bitmap): 72, id(dead_bitmap): 0}
)python";

constexpr const char* kForms[] = {
    "i", "d", "$", "#", "%", "O", "M", "6", "4", "Q", "T", "G", "C", "CN", "X", "V", "V3", "V4", "V33", "V43",
    "V46", "U", "c", "f", "r", "B", "I", "L", "b", "h", "j", "l", "v", "A", "P", "|",
    // No letters, or what is stepped over in two halves.
    "s", "N", "e", "es", "O&", "k", "?", ")", "V6", "VC", "VC46", "VC33", "&", "~"};
constexpr const char* kCheckedForms[] = {"A!", "O!", "P!", "A!N", "O!N", "P!N"};
constexpr const char* kTails[] = {"", "", ":f", ":", ";own words", ";", ";own: words", ":f;g"};

void Require(bool held, const std::string& what = "") {
  if (held) return;
  std::fprintf(stderr, "%s\n", what.c_str());
  PyErr_Print();
  std::abort();
}

PyObject* Main() { return PyModule_GetDict(PyImport_AddModule("__main__")); }
PyObject* Get(const char* name) { return PyDict_GetItemString(Main(), name); }

void Run(const char* source) {
  PyObject* done = PyRun_String(source, Py_file_input, Main(), Main());
  Require(done, "the objects can't be made");
  Py_DECREF(done);
}

void Start() {
  // The sanitizer sees the interpreter's memory only where it comes from the C library.
  setenv("PYTHONMALLOC", "malloc", 0);
  Require(!qlx::BindInterpreterLibrary());
  qlx::StartSettings settings;
  settings.program = QLX_PYTHON_EXECUTABLE;
  Require(qlx::StartInterpreter(settings).empty());
  Host::Install();
  getargs::InstallLetters();
  Run(getargs::kClasses);
  uint64_t number = 71;
  for (const std::string name : {"atom", "bitmap"}) {
    PyTypeObject* type = getargs::MakeType(name == "atom" ? "qlx.TestAtom" : "qlx.TestBitmap");
    PyDict_SetItemString(Main(), name.c_str(), getargs::MakeAtom(type, number++));
    PyDict_SetItemString(Main(), ("dead_" + name).c_str(), getargs::MakeAtom(type, 0));
  }
  PyObject* kinds = PyList_New(0);
  for (const char* kind : getargs::kKinds) PyList_Append(kinds, PyUnicode_FromString(kind));
  PyDict_SetItemString(Main(), "KINDS", kinds);
  Run(kObjects);
  Run(kReference);
}

// What the fuzzer's bytes choose.
class Choices {
 public:
  Choices(const uint8_t* data, size_t size) : data_(data), end_(data + size) {}
  size_t Below(size_t limit) { return data_ == end_ ? 0 : *data_++ % limit; }
  bool OneIn(size_t count) { return Below(count) == count - 1; }
  PyObject* Of(PyObject* list) {
    return PyList_GET_ITEM(list, Py_ssize_t(Below(size_t(PyList_GET_SIZE(list)))));
  }

 private:
  const uint8_t *data_, *end_;
};

// A format, and for each of its items an argument that mostly fits.
class Case {
 public:
  // Where a wrong step may set letters and targets apart, no letter takes a type from the targets.
  explicit Case(Choices& choices) : choices_(choices), checked_(choices.OneIn(2)) {
    const size_t count = choices.Below(8);
    for (size_t i = 0; i < count && format.size() < kFormatBytes; ++i) {
      if (choices.OneIn(4)) format += '|';
      arguments.push_back(Item(0));
    }
    if (choices.OneIn(32)) Nest();
    tail = kTails[choices.Below(std::size(kTails))];
  }
  ~Case() {
    for (PyObject* argument : arguments) Py_DECREF(argument);
  }

  std::string format, tail;
  std::vector<PyObject*> arguments;

  bool IsChecked() const { return checked_; }

 private:
  PyObject* Any() { return choices_.Of(Get("OBJECTS")); }

  PyObject* Item(int depth) {
    if (depth < 4 && format.size() < kFormatBytes && choices_.OneIn(5)) return Sequence(depth);
    std::string form = kForms[choices_.Below(std::size(kForms))];
    if (checked_) {
      if (choices_.OneIn(3)) form = kCheckedForms[choices_.Below(std::size(kCheckedForms))];
      // These would be left over, or stepped over as two items.
      const bool uncounted = std::string("#$%46").find(form[0]) != std::string::npos;
      if ((depth > 0 && uncounted) || form == "V6" || form.substr(0, 2) == "VC" || form == "e") form = "i";
    }
    format += form;
    PyObject* good = PyDict_GetItemString(Get("GOOD"), form.substr(0, 1).c_str());
    PyObject* object = good && !choices_.OneIn(6) ? choices_.Of(good) : Any();
    Py_INCREF(object);
    return object;
  }
  PyObject* Sequence(int depth) {
    format += '(';
    PyObject* list = PyList_New(0);
    for (size_t count = choices_.Below(4); count > 0; --count) {
      PyObject* item = Item(depth + 1);
      if (!choices_.OneIn(12)) PyList_Append(list, item);
      Py_DECREF(item);
    }
    if (!choices_.OneIn(16)) format += ')';
    return list;
  }
  // More levels than any message has room for.
  void Nest() {
    const size_t depth = 20 + choices_.Below(60);
    PyObject* object = Any();
    Py_INCREF(object);
    for (size_t i = 0; i < depth; ++i) {
      PyObject* list = PyList_New(0);
      PyList_Append(list, object);
      Py_DECREF(object);
      object = list;
    }
    format += std::string(depth, '(') + "M" + std::string(depth, ')');
    arguments.push_back(object);
  }

  Choices& choices_;
  const bool checked_;
};

template <size_t... kIndex>
int32_t Parse(PyObject* args, PyObject* keywords, const char* format, const char* const* names, void** slots,
              std::index_sequence<kIndex...>) {
  return qlx::ParseTupleAndKeywords(args, keywords, format, names, slots[kIndex]...);
}

bool Agree(const std::string& text, const std::string& expected) {
  const size_t any = expected.find('*');
  return text.substr(0, any) == expected.substr(0, any);
}

std::string Utf8(PyObject* text) {
  PyObject* bytes = PyUnicode_AsEncodedString(text, "utf-8", "surrogatepass");
  Require(bytes);
  std::string result(PyBytes_AS_STRING(bytes), size_t(PyBytes_GET_SIZE(bytes)));
  Py_DECREF(bytes);
  return result;
}

void Compare(const std::string& format, bool checked, PyObject* args, PyObject* keywords,
             const std::vector<std::string>& names) {
  std::vector<const char*> list;
  PyObject* texts = PyList_New(0);
  for (const std::string& name : names) {
    list.push_back(name.c_str());
    PyObject* text = PyUnicode_FromString(name.c_str());
    PyList_Append(texts, text);
    Py_DECREF(text);
  }
  list.push_back(nullptr);
  PyObject* answer = PyObject_CallFunction(Get("parse"), "OOsO", args, keywords ? keywords : Get("NONE"),
                                           format.c_str(), texts);
  Require(answer, "the reference fails");

  std::vector<Target> targets;
  void* slots[kSlots] = {};
  for (const char* item = format.c_str(); checked && !getargs::IsEnd(*item);) {
    const std::string form(item, getargs::FormSize(item));
    item += form.size();
    if (form == "A" || form == "P" || std::strchr("()|N!&?~", form[0])) continue;
    if (form.size() == 2 && form[1] == '!') {
      slots[targets.size()] = PyDict_GetItemString(Get("TYPES"), form.substr(0, 1).c_str());
      targets.emplace_back("");
    }
    if (form[0] == 'e' || form == "O&") targets.emplace_back("");
    targets.emplace_back("", form == "$" || form == "%" ? 0 : 0xa5);
  }
  while (targets.size() < kSlots) targets.emplace_back("", 0);
  for (size_t i = 0; i < kSlots; ++i)
    if (!slots[i]) slots[i] = targets[i].Data();

  const int32_t result =
      Parse(args, keywords, format.c_str(), list.data(), slots, std::make_index_sequence<kSlots>());
  const std::string error = getargs::TakeError();
  const bool expected = PyTuple_GET_ITEM(answer, 0) == Py_True;
  const std::string expectedError = Utf8(PyTuple_GET_ITEM(answer, 1));
  Require(result == int(expected) && Agree(error, expectedError),
          format + ": " + std::to_string(result) + " " + error + "\nexpected " + expectedError);
  for (size_t i = 0; i < kSlots; ++i) {
    PyObject* number = PyLong_FromSize_t(i);
    PyObject* written = PyDict_GetItem(PyTuple_GET_ITEM(answer, 2), number);
    Py_DECREF(number);
    const std::string form = written ? Utf8(PyTuple_GET_ITEM(written, 0)) : "i";
    const std::string value = written ? Utf8(PyTuple_GET_ITEM(written, 1)) : "-";
    const std::string held = targets[i].Describe(form);
    // Among zeros a zero is not seen; an object's text may have no UTF-8 form.
    const bool zero = held == "-" && !checked && value.find_first_not_of("0 /'") == value.npos;
    Require(held == value || zero || held == "(no text)",
            format + ", slot " + std::to_string(i) + ": " + held + "\nexpected " + value);
    targets[i].Clear(form);
  }
  Require(!PyErr_Occurred());
  Require(Host::alive == 0, format + ": a text is left");
  Py_DECREF(answer);
  Py_DECREF(texts);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool started = (Start(), PyDict_SetItemString(Main(), "NONE", PyDict_New()), true);
  (void)started;
  Choices choices(data, size);
  const Case made(choices);
  std::vector<std::string> names;
  size_t count = made.arguments.size();
  if (choices.OneIn(10)) count += 1;
  if (count > 0 && choices.OneIn(10)) count -= 1;
  for (size_t i = 0; i < count; ++i)
    names.emplace_back(choices.OneIn(30) ? "\xc3\xa9" : std::string(1, char('a' + i)));
  const size_t given =
      made.arguments.size() - (choices.OneIn(3) ? choices.Below(made.arguments.size() + 1) : 0);
  const size_t positional = choices.Below(given + 1);
  PyObject* args = PyTuple_New(Py_ssize_t(positional));
  for (size_t i = 0; i < positional; ++i) {
    Py_INCREF(made.arguments[i]);
    PyTuple_SET_ITEM(args, Py_ssize_t(i), made.arguments[i]);
  }
  PyObject* keywords = choices.OneIn(4) ? nullptr : PyDict_New();
  for (size_t i = positional; keywords && i < given; ++i) {
    if (choices.OneIn(6)) continue;
    const std::string name = choices.OneIn(8) || i >= names.size() ? "" : names[i];
    PyObject* key = name.empty() ? choices.Of(Get("KEYS")) : PyUnicode_FromString(name.c_str());
    // Two hostile keys can't be told apart.
    if (PyDict_SetItem(keywords, key, made.arguments[i]) != 0) PyErr_Clear();
    if (!name.empty()) Py_DECREF(key);
  }
  if (keywords && choices.OneIn(12) && positional > 0 && !names.empty())
    PyDict_SetItemString(keywords, names[0].c_str(), Py_None), PyErr_Clear();
  Compare(made.format + made.tail, made.IsChecked(), args, keywords, names);
  Py_DECREF(args);
  Py_XDECREF(keywords);
  return 0;
}

// What the interpreter keeps until the process ends.
extern "C" const char* __lsan_default_suppressions() { return "leak:libpython\n"; }
