// The words of every error that the package raises.

#include "kit/i_errors.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "kelvar/general.h"
#include "kelvar/plugin.h"
#include "kelvar/text.h"

namespace qlx {
namespace {

constexpr size_t kTextBytes = 1000;
constexpr size_t kExpectedBytes = 150;

// A text that was cut may end inside a character.
void RaiseText(PyObject* exception, const char* text) {
  PyObject* message = PyUnicode_DecodeUTF8(text, Py_ssize_t(std::strlen(text)), "replace");
  if (message) PyErr_SetObject(exception, message);
  Py_XDECREF(message);
}

}  // namespace

const char* NameOfType(PyObject* object) { return object == Py_None ? "None" : Py_TYPE(object)->tp_name; }

PyObject* RaiseFormatted(PyObject* exception, const char* format, ...) {
  char text[kTextBytes];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  RaiseText(exception, text);
  return nullptr;
}

PyObject* ReportAllocFailed(PyTypeObject* type, int32_t pluginId) {
  const char* name = type->tp_name;
  if (pluginId == 0) return RaiseFormatted(PyExc_BaseException, "could not allocate '%s' instance", name);
  if (BasePlugin::FindPlugin(pluginId, 0))
    return RaiseFormatted(PyExc_BaseException, "could not allocate '%s (ID %i)' instance", name, pluginId);
  return RaiseFormatted(PyExc_BaseException, "the plugin '%s' (ID %i) is missing. Could not allocate instance",
                        name, pluginId);
}

void ReportNotAlive(PyTypeObject* type) {
  RaiseFormatted(PyExc_ReferenceError, "the object '%s' is not alive", type->tp_name);
}

void ReportHostNotAlive(PyTypeObject* type) {
  RaiseFormatted(PyExc_ReferenceError, "the host object of '%s' is not alive", type->tp_name);
}

void ReportLinkedNotAlive(PyTypeObject* type) {
  RaiseFormatted(PyExc_ReferenceError, "the linked object of '%s' is not alive", type->tp_name);
}

PyObject* RaiseMainThreadOnly() {
  return RaiseFormatted(PyExc_RuntimeError, "must be called from the main thread");
}

PyObject* RaiseOutOfRange(const char* what) {
  return RaiseFormatted(PyExc_IndexError, "%s out of range", what);
}

PyObject* RaiseOutOfDepth() { return RaiseFormatted(PyExc_IndexError, "index out of depth"); }

PyObject* RaiseWrongValue() { return RaiseFormatted(PyExc_ValueError, "Wrong value for given argument."); }

PyObject* RaiseNotInstantiable() {
  return RaiseFormatted(PyExc_NotImplementedError, "this type cannot be instantiated");
}

int RaiseItemDeletion(PyObject* object) {
  RaiseFormatted(PyExc_TypeError, "'%s' object doesn't support item deletion.", Py_TYPE(object)->tp_name);
  return -1;
}

PyObject* RaiseIntTooLarge() {
  return RaiseFormatted(PyExc_OverflowError, "Python int too large to convert to C long");
}

int RaiseNumberAttribute(const char* name) {
  RaiseFormatted(PyExc_TypeError, "the %s attribute must be a number", name);
  return -1;
}

PyObject* RaiseIndexDepth() { return RaiseFormatted(PyExc_IndexError, "index is out of depth"); }

PyObject* RaiseVectorCount() { return RaiseFormatted(PyExc_TypeError, "Vector.__init__ takes 3 arguments."); }

PyObject* RaiseVector4dCount() {
  return RaiseFormatted(PyExc_TypeError, "Vector4d.__init__ takes at most 4 arguments.");
}

PyObject* RaiseUnknownParameterType() {
  return RaiseFormatted(PyExc_AttributeError, "Parameter value not accessible (object unknown in Python)");
}

PyObject* RaiseParameterAccess() { return RaiseFormatted(PyExc_AttributeError, "parameter access failed"); }
PyObject* RaiseParameterSet() { return RaiseFormatted(PyExc_AttributeError, "parameter set failed"); }

void RaiseUnexpectedType(PyObject* object) {
  RaiseFormatted(PyExc_TypeError, "__setitem__ got unexpected type '%s'.", Py_TYPE(object)->tp_name);
}

void RaiseKeyPosition(Py_ssize_t position) {
  RaiseFormatted(PyExc_TypeError, "Invalid key type at position '%i'.", int(position));
}

PyObject* RaiseOtherInternalType() {
  return RaiseFormatted(PyExc_TypeError, "The object have to be of the same internal type.");
}

PyObject* RaiseReadOnlyMemory() { return RaiseFormatted(PyExc_ValueError, "memoryview is read-only"); }

// Scripts have always met both spellings.
PyObject* RaiseInsertOnItself() {
  return RaiseFormatted(PyExc_AssertionError, "cannot call insert function on itself");
}
PyObject* RaiseHeadInsertOnItself() {
  return RaiseFormatted(PyExc_AssertionError, "Cannot call insert function on itself");
}

PyObject* RaiseInsertRefused() {
  return RaiseFormatted(PyExc_AssertionError, "the object cannot be inserted there");
}

PyObject* RaiseSameParentAndPrevious() {
  return RaiseFormatted(PyExc_AssertionError,
                        "Cannot call insert function with same parent and previous objects");
}

PyObject* RaiseHasNext() {
  return RaiseFormatted(PyExc_AssertionError, "Found next objects. Please add them separately.");
}

PyObject* RaiseNoParticles() { return RaiseFormatted(PyExc_BaseException, "Could not find 'Driftmotes'."); }

PyObject* RaiseAttributeIsNo(const char* name) {
  return RaiseFormatted(PyExc_TypeError, "the type attribute must be a %s", name);
}

void RaiseNotConvertible(PyObject* object) {
  RaiseFormatted(PyExc_TypeError, "could not convert '%s'", Py_TYPE(object)->tp_name);
}

PyObject* RaiseNotPickled(int32_t entryId) {
  return RaiseFormatted(PyExc_TypeError,
                        "cannot pickle the entry %i of a container: it holds a link or a pointer", entryId);
}

PyObject* RaiseNoUuidModule() {
  return RaiseFormatted(PyExc_ImportError, "uuid module missing - cannot convert uuid");
}

PyObject* RaiseNullByte() { return RaiseFormatted(PyExc_ValueError, "embedded null byte"); }

PyObject* RaiseFileInUse() {
  return RaiseFormatted(PyExc_IOError, "call HyperFile.Close() before reusing a HyperFile");
}

PyObject* RaiseFileNotOpen() { return RaiseFormatted(PyExc_IOError, "hyperfile object is not open yet"); }

PyObject* RaiseThreadDead() { return RaiseFormatted(PyExc_TypeError, "thread object is dead"); }

PyObject* RaiseAskedThreadDead() {
  return RaiseFormatted(PyExc_TypeError, "internal established thread object is already dead");
}

PyObject* RaiseAbstractMethod() {
  return RaiseFormatted(PyExc_EnvironmentError, "This method is abstract and cannot be called.");
}

PyObject* RaiseNoMemoryBlock(PyObject* object) {
  return RaiseFormatted(PyExc_TypeError, "must be bytes or bytearray or memoryview, not %.50s",
                        NameOfType(object));
}

PyObject* RaiseInvalidLength() { return RaiseFormatted(PyExc_ValueError, "Invalid object length."); }

// Scripts may look for this text: its spelling stays.
PyObject* RaiseTextTooLong() {
  return RaiseFormatted(PyExc_TypeError, "The lenght of the string is greater than 1");
}

int RaiseReadOnlyAttribute() {
  RaiseFormatted(PyExc_AttributeError, "the attribute is read-only");
  return -1;
}

int RaiseAttributeNotRemovable(const char* name) {
  RaiseFormatted(PyExc_AttributeError, "the attribute '%s' cannot be removed", name);
  return -1;
}

void RaiseEmptyScope() { RaiseFormatted(PyExc_SystemError, "the scope of the script is empty"); }

bool CheckSourceText(const std::string& source) {
  if (source.find('\0') == std::string::npos) return true;
  RaiseFormatted(PyExc_ValueError, "source code string cannot contain null bytes");
  return false;
}

void RaiseExpectedType(const char* expected, PyObject* object) {
  char text[kExpectedBytes];
  PyOS_snprintf(text, sizeof text, "Expected %.50s, not %.50s", expected, NameOfType(object));
  RaiseText(PyExc_TypeError, text);
}

void RaiseExpectedTypeFor(const char* function, const char* expected, PyObject* object) {
  char text[kExpectedBytes];
  PyOS_snprintf(text, sizeof text, "%.50s expected %.50s, not %.50s", function, expected, NameOfType(object));
  RaiseText(PyExc_TypeError, text);
}

void ReportBadComparison(PyObject* left, PyObject* right, int op) {
  const char* words = "??";
  if (op == Py_LT) words = "<";
  if (op == Py_LE) words = "<=";
  if (op == Py_GT) words = ">";
  if (op == Py_GE) words = ">=";
  if (words[0] == '?')
    kelvar::DiagnosticOutput(
        kelvar::Text("stop: a comparison with the code " + std::to_string(op) + " has no words"));
  RaiseFormatted(PyExc_TypeError, "unsupported comparison operator ( '%s' ) for '%.100s' and '%.100s'", words,
                 Py_TYPE(left)->tp_name, Py_TYPE(right)->tp_name);
}

}  // namespace qlx
