/* The peer in plain C: what a careful author writes by hand with the interpreter's own parser. */

#include "peer_c.h"

#include <math.h>

/* Has the fields of an element's wrapper. */
typedef struct Record {
  PyObject_HEAD void* slot;
  uint64_t generation;
  char owned;
} Record;

enum { kMostFree = 1024 };
static Record* g_free[kMostFree];
static int g_freeCount = 0;

static PyTypeObject g_recordType;

PyObject* PeerMakeRecord(void* slot, uint64_t generation) {
  Record* record = g_freeCount > 0 ? g_free[--g_freeCount] : PyObject_Malloc(sizeof(Record));
  if (!record) return PyErr_NoMemory();
  PyObject_INIT(record, &g_recordType);
  record->slot = slot;
  record->generation = generation;
  record->owned = 0;
  return (PyObject*)record;
}

static void DropRecord(PyObject* self) {
  if (g_freeCount < kMostFree)
    g_free[g_freeCount++] = (Record*)self;
  else
    PyObject_Free(self);
}

static PyObject* MakeRecord(PyObject* self, PyObject* unused) {
  (void)unused;
  return PeerMakeRecord(self, 1);
}

static PyTypeObject g_recordType = {
    PyVarObject_HEAD_INIT(NULL, 0).tp_name = "peer_c.Record",
    .tp_basicsize = sizeof(Record),
    .tp_dealloc = DropRecord,
    .tp_flags = Py_TPFLAGS_DEFAULT,
};

/* Three numbers, and the methods that are called. */
typedef struct Thing {
  PyObject_HEAD double x, y, z;
  int width;
} Thing;

static PyTypeObject g_thingType;

static PyObject* Create(PyTypeObject* type, PyObject* args, PyObject* keywords) {
  static char* names[] = {"x", "y", "z", NULL};
  double x = 0, y = 0, z = 0;
  if (!PyArg_ParseTupleAndKeywords(args, keywords, "|ddd", names, &x, &y, &z)) return NULL;
  Thing* self = (Thing*)type->tp_alloc(type, 0);
  if (!self) return NULL;
  self->x = x;
  self->y = y;
  self->z = z;
  self->width = 64;
  return (PyObject*)self;
}

static PyObject* GetWidth(PyObject* self, PyObject* unused) {
  (void)unused;
  return PyLong_FromLong(((Thing*)self)->width);
}

static PyObject* Weigh(PyObject* self, PyObject* args, PyObject* keywords) {
  static char* names[] = {"a", "b", NULL};
  int a;
  double b;
  if (!PyArg_ParseTupleAndKeywords(args, keywords, "id", names, &a, &b)) return NULL;
  return PyFloat_FromDouble(((Thing*)self)->x + a * b);
}

static PyObject* GetDistance(PyObject* unused, PyObject* args, PyObject* keywords) {
  (void)unused;
  static char* names[] = {"v1", "v2", NULL};
  PyObject *first, *second;
  if (!PyArg_ParseTupleAndKeywords(args, keywords, "O!O!", names, &g_thingType, &first, &g_thingType, &second))
    return NULL;
  const Thing* a = (const Thing*)first;
  const Thing* b = (const Thing*)second;
  const double x = a->x - b->x, y = a->y - b->y, z = a->z - b->z;
  return PyFloat_FromDouble(sqrt(x * x + y * y + z * z));
}

static PyMethodDef g_thingMethods[] = {
    {"GetWidth", GetWidth, METH_NOARGS, NULL},
    {"Weigh", (PyCFunction)(void (*)(void))Weigh, METH_VARARGS | METH_KEYWORDS, NULL},
    {"GetDistance", (PyCFunction)(void (*)(void))GetDistance, METH_VARARGS | METH_KEYWORDS | METH_STATIC, NULL},
    {"MakeRecord", MakeRecord, METH_NOARGS, NULL},
    {NULL, NULL, 0, NULL},
};

static PyTypeObject g_thingType = {
    PyVarObject_HEAD_INIT(NULL, 0).tp_name = "peer_c.Thing",
    .tp_basicsize = sizeof(Thing),
    .tp_flags = Py_TPFLAGS_DEFAULT,
    .tp_methods = g_thingMethods,
    .tp_new = Create,
};

static struct PyModuleDef g_module = {PyModuleDef_HEAD_INIT, .m_name = "peer_c", .m_size = -1};

PyMODINIT_FUNC PyInit_peer_c(void) {
  if (PyType_Ready(&g_recordType) < 0 || PyType_Ready(&g_thingType) < 0) return NULL;
  PyObject* module = PyModule_Create(&g_module);
  if (!module) return NULL;
  Py_INCREF(&g_thingType);
  if (PyModule_AddObject(module, "Thing", (PyObject*)&g_thingType) == 0) return module;
  Py_DECREF(&g_thingType);
  Py_DECREF(module);
  return NULL;
}
