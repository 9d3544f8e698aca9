#include "value_layout.h"

extern "C" int layout_in_c(void);

int main() { return layout_in_c() == int(sizeof(HostTables)) ? 0 : 1; }
