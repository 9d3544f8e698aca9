// The words of every error that the package raises. Lock held in all of these.
#ifndef KIT_I_ERRORS_H
#define KIT_I_ERRORS_H

#include <Python.h>

#include <cstdint>
#include <string>

namespace qlx {

// Raises `exception` with a printf-like text of at most 999 bytes.
__attribute__((format(printf, 2, 3))) PyObject* RaiseFormatted(PyObject* exception, const char* format, ...);

// BaseException: the host gave no instance of `type`. With the id of a plug-in, the text tells
// whether the host has it.
PyObject* ReportAllocFailed(PyTypeObject* type, int32_t pluginId);

// ReferenceError: the wrapper's own object has gone, the object that holds its data has, or the
// object that a helper was set up with has.
void ReportNotAlive(PyTypeObject* type);
void ReportHostNotAlive(PyTypeObject* type);
void ReportLinkedNotAlive(PyTypeObject* type);

PyObject* RaiseMainThreadOnly();                   // RuntimeError
PyObject* RaiseOutOfRange(const char* what);       // IndexError
PyObject* RaiseOutOfDepth();                       // IndexError
PyObject* RaiseWrongValue();                       // ValueError: an argument outside of a fixed set
PyObject* RaiseNotInstantiable();                  // NotImplementedError
int RaiseItemDeletion(PyObject* object);           // TypeError
PyObject* RaiseIntTooLarge();                      // OverflowError
int RaiseNumberAttribute(const char* name);        // TypeError: the attribute takes a number
PyObject* RaiseIndexDepth();                       // IndexError: an index that a value does not have
PyObject* RaiseVectorCount();                      // TypeError: the number of a constructor's arguments
PyObject* RaiseVector4dCount();                    // TypeError
PyObject* RaiseUnknownParameterType();             // AttributeError
PyObject* RaiseParameterAccess();                  // AttributeError
PyObject* RaiseParameterSet();                     // AttributeError
void RaiseUnexpectedType(PyObject* object);        // TypeError: a value that no parameter takes
void RaiseKeyPosition(Py_ssize_t position);        // TypeError: an element of a parameter's key
PyObject* RaiseOtherInternalType();                // TypeError: a copy onto another type
PyObject* RaiseReadOnlyMemory();                   // ValueError
PyObject* RaiseInsertOnItself();                   // AssertionError, of nodes
PyObject* RaiseHeadInsertOnItself();               // AssertionError, of heads
PyObject* RaiseInsertRefused();                    // AssertionError: there is no place for the node
PyObject* RaiseSameParentAndPrevious();            // AssertionError
PyObject* RaiseHasNext();                          // AssertionError: others follow what is inserted
PyObject* RaiseNoParticles();                      // BaseException
PyObject* RaiseAttributeIsNo(const char* name);    // TypeError: an argument of another type
void RaiseNotConvertible(PyObject* object);        // TypeError
PyObject* RaiseNotPickled(int32_t entryId);        // TypeError
PyObject* RaiseNoUuidModule();                     // ImportError
PyObject* RaiseNullByte();                         // ValueError: a path with a null byte
PyObject* RaiseFileInUse();                        // IOError: it is open already
PyObject* RaiseFileNotOpen();                      // IOError
PyObject* RaiseThreadDead();                       // TypeError: its object went while it was started
PyObject* RaiseAskedThreadDead();                  // TypeError: it is asked whether to stop
PyObject* RaiseAbstractMethod();                   // EnvironmentError
PyObject* RaiseNoMemoryBlock(PyObject* object);    // TypeError
PyObject* RaiseInvalidLength();                    // ValueError: a sequence without items
PyObject* RaiseTextTooLong();                      // TypeError: one character was wanted
int RaiseReadOnlyAttribute();                      // AttributeError
int RaiseAttributeNotRemovable(const char* name);  // AttributeError

void RaiseEmptyScope();  // SystemError: a script is to run in a scope that has no names yet

// ValueError for a source text with a null byte, which the compiler would cut there; false then.
bool CheckSourceText(const std::string& source);

// An object's type as messages name it: "None" for None.
const char* NameOfType(PyObject* object);

// TypeError: what was expected and what came, by its type or as "None".
void RaiseExpectedType(const char* expected, PyObject* object);
void RaiseExpectedTypeFor(const char* function, const char* expected, PyObject* object);

// TypeError for an ordering of two objects that have none. `op` is Py_LT, Py_LE, Py_GT or Py_GE.
void ReportBadComparison(PyObject* left, PyObject* right, int op);

}  // namespace qlx

#endif
