/* A library that has the look of an interpreter of another version. */
const char* Py_GetVersion(void);
int Py_IsInitialized(void);

const char* Py_GetVersion(void) { return "3.99.0 (fake)"; }
int Py_IsInitialized(void) { return 0; }
