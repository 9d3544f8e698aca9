// The record of wrapper instances that are alive.

#include "interpreter/lib_python_leaks.h"

#include <frameobject.h>

#include <new>
#include <string>

#include "interpreter/lib_python_output.h"
#include "kelvar/general.h"
#include "kelvar/text.h"
#include "kit/i_lasting.h"
#include "kit/i_pool.h"

namespace qlx {
namespace {

Lasting<LeakTracker> g_tracker;

struct Place {
  int32_t line = -1;
  String file;
};

// The line of the script that runs; -1 where none does.
Place PlaceOfScript() {
  Place place;
  PyFrameObject* frame = PyEval_GetFrame();
  if (!frame) return place;
  const PreservedError preserved;
  PyObject* code = PyObject_GetAttrString(reinterpret_cast<PyObject*>(frame), "f_code");
  PyObject* name = code ? PyObject_GetAttrString(code, "co_filename") : nullptr;
  // A file name may have bytes that are no UTF-8.
  PyObject* text = name ? PyUnicode_AsEncodedString(name, "utf-8", "backslashreplace") : nullptr;
  if (text) place = {PyFrame_GetLineNumber(frame), kelvar::Text(PyBytes_AsString(text))};
  PyErr_Clear();
  Py_XDECREF(text);
  Py_XDECREF(name);
  Py_XDECREF(code);
  return place;
}

std::string Describe(const String& file, int32_t line, const String& typeName) {
  return std::string(kelvar::View(file)) + "(" + std::to_string(line) +
         "): " + std::string(kelvar::View(typeName));
}

void Print(const std::string& text) { kelvar::DiagnosticOutput(kelvar::Text(text)); }

}  // namespace

LeakTracker& g_wrapperTracker = *g_tracker;

void LeakTracker::Add(PyObject* object, int32_t line, const char* file) {
  try {
    Place place = PlaceOfScript();
    if (place.line == -1) place = {line, kelvar::Text(std::string(file) + " - memleak outside Python context")};
    records_[object] = {place.line, std::move(place.file), kelvar::Text(Py_TYPE(object)->tp_name)};
  } catch (const std::bad_alloc&) {
    // An instance that can't be recorded is not reported; it works all the same.
  }
}

void LeakTracker::Remove(PyObject* object) {
  const auto found = records_.find(object);
  if (found == records_.end()) return;
  const Record record = std::move(found->second);
  records_.erase(found);
  if (!reported_) return;
  try {
    Print("Python object (maybe) freed too late: " + Describe(record.file, record.line, record.typeName));
  } catch (const std::bad_alloc&) {
    // A deallocation goes on without its report.
  }
}

void LeakTracker::Restart() {
  reported_ = false;
  records_.clear();
  ReleaseRecordPools();
}

void LeakTracker::Report() {
  if (!IsOn()) return;
  reported_ = true;
  if (!records_.empty()) {
    Print("\n\n*** Potential Memory Leak in Python Detected ***\n\n");
    for (const auto& [object, record] : records_) Print(Describe(record.file, record.line, record.typeName));
    Print(std::to_string(records_.size()) + " objects\n\n");
  }
  Print("Python Trace End...");
}

void ReportLeaks() { g_wrapperTracker.Report(); }

}  // namespace qlx
