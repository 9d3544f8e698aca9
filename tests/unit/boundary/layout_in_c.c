#include "value_layout.h"

int layout_in_c(void);

/* Linked from the other language: C linkage is what every header promises. */
int layout_in_c(void) { return (int)sizeof(HostTables); }
