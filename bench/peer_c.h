/* What the benchmarks of the binding kit are measured against: the same functions by hand. */
#ifndef BENCH_PEER_C_H
#define BENCH_PEER_C_H

#include <Python.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A new object with the size of an element's wrapper, from a list of freed ones. */
PyObject* PeerMakeRecord(void* slot, uint64_t generation);

PyMODINIT_FUNC PyInit_peer_c(void);
PyMODINIT_FUNC PyInit_peer_pybind11(void);

#ifdef __cplusplus
}
#endif
#endif
