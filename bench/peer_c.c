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

static PyObject* MakeRecord(PyObject* self, PyObject* args, PyObject* keywords) {
  static char* names[] = {"id", NULL};
  int id;
  if (!PyArg_ParseTupleAndKeywords(args, keywords, "i", names, &id)) return NULL;
  return PeerMakeRecord(self, (uint64_t)id);
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
    {"MakeRecord", (PyCFunction)(void (*)(void))MakeRecord, METH_VARARGS | METH_KEYWORDS, NULL},
    {NULL, NULL, 0, NULL},
};

static PyTypeObject g_thingType = {
    PyVarObject_HEAD_INIT(NULL, 0).tp_name = "peer_c.Thing",
    .tp_basicsize = sizeof(Thing),
    .tp_flags = Py_TPFLAGS_DEFAULT,
    .tp_methods = g_thingMethods,
    .tp_new = Create,
};

/* Three numbers with one operator and one attribute: the least that a type of this layout can do. */
typedef struct Numbers {
  PyObject_HEAD double x, y, z;
} Numbers;

static Numbers* g_freeNumbers[kMostFree];
static int g_freeNumbersCount = 0;

static PyTypeObject g_numbersType;

static PyObject* MakeNumbers(double x, double y, double z) {
  Numbers* self =
      g_freeNumbersCount > 0 ? g_freeNumbers[--g_freeNumbersCount] : PyObject_Malloc(sizeof(Numbers));
  if (!self) return PyErr_NoMemory();
  PyObject_INIT(self, &g_numbersType);
  self->x = x;
  self->y = y;
  self->z = z;
  return (PyObject*)self;
}

static void DropNumbers(PyObject* self) {
  if (g_freeNumbersCount < kMostFree)
    g_freeNumbers[g_freeNumbersCount++] = (Numbers*)self;
  else
    PyObject_Free(self);
}

static PyObject* CreateNumbers(PyTypeObject* type, PyObject* args, PyObject* keywords) {
  (void)type;
  (void)keywords;
  double x = 0, y = 0, z = 0;
  return PyArg_ParseTuple(args, "ddd", &x, &y, &z) ? MakeNumbers(x, y, z) : NULL;
}

static PyObject* AddNumbers(PyObject* left, PyObject* right) {
  if (Py_TYPE(left) != &g_numbersType || Py_TYPE(right) != &g_numbersType) Py_RETURN_NOTIMPLEMENTED;
  const Numbers* a = (const Numbers*)left;
  const Numbers* b = (const Numbers*)right;
  return MakeNumbers(a->x + b->x, a->y + b->y, a->z + b->z);
}

static PyObject* GetX(PyObject* self, void* unused) {
  (void)unused;
  return PyFloat_FromDouble(((Numbers*)self)->x);
}

static PyNumberMethods g_numbersOperators = {.nb_add = AddNumbers};
static PyGetSetDef g_numbersAttributes[] = {{"x", GetX, NULL, NULL, NULL}, {NULL, NULL, NULL, NULL, NULL}};

static PyTypeObject g_numbersType = {
    PyVarObject_HEAD_INIT(NULL, 0).tp_name = "peer_c.Numbers",
    .tp_basicsize = sizeof(Numbers),
    .tp_dealloc = DropNumbers,
    .tp_as_number = &g_numbersOperators,
    .tp_flags = Py_TPFLAGS_DEFAULT,
    .tp_getset = g_numbersAttributes,
    .tp_new = CreateNumbers,
};

static struct PyModuleDef g_module = {PyModuleDef_HEAD_INIT, .m_name = "peer_c", .m_size = -1};

static int AddType(PyObject* module, const char* name, PyTypeObject* type) {
  if (PyType_Ready(type) < 0) return 0;
  Py_INCREF(type);
  if (PyModule_AddObject(module, name, (PyObject*)type) == 0) return 1;
  Py_DECREF(type);
  return 0;
}

PyMODINIT_FUNC PyInit_peer_c(void) {
  if (PyType_Ready(&g_recordType) < 0) return NULL;
  PyObject* module = PyModule_Create(&g_module);
  if (!module) return NULL;
  if (AddType(module, "Thing", &g_thingType) && AddType(module, "Numbers", &g_numbersType)) return module;
  Py_DECREF(module);
  return NULL;
}
