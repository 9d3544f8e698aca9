# Fails unless the module defines exactly the three symbols that a host looks for.
execute_process(COMMAND ${NM} -D --defined-only ${MODULE} OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^ \n]+\n" symbols "${listing}")
list(TRANSFORM symbols STRIP)
list(SORT symbols)
if(NOT symbols STREQUAL "g_CpuYieldDelegate;g_tavor;qlx_main")
  message(FATAL_ERROR "exported: ${symbols}")
endif()
