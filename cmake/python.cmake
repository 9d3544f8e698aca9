# The interpreter that the module embeds: QLX_PYTHON, or the distribution's.
#
# The module is compiled against its headers but not linked to its library. It looks the
# library up when it starts, so that a host without an interpreter can load the module.

set(QLX_PYTHON "/usr/bin/python3" CACHE FILEPATH "The python3 whose library the module embeds")

execute_process(
  COMMAND ${QLX_PYTHON} -I ${CMAKE_CURRENT_LIST_DIR}/describe_python.py ${CMAKE_BINARY_DIR}/generated/python
  RESULT_VARIABLE failed
  ERROR_VARIABLE reason)
if(failed)
  message(FATAL_ERROR "${QLX_PYTHON} can't be embedded: ${reason}")
endif()
include(${CMAKE_BINARY_DIR}/generated/python/python_interpreter.cmake)
message(STATUS "Python ${QLX_PYTHON_VERSION} from ${QLX_PYTHON_LIBRARY}")

# Headers for code that ends up in the module.
add_library(python_headers INTERFACE)
target_include_directories(python_headers SYSTEM INTERFACE ${QLX_PYTHON_INCLUDE})
# As a system's header, for what compilers say of names that a file does not use.
target_include_directories(python_headers SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/generated/python)
target_compile_options(python_headers INTERFACE -include python_weak.h)

# Headers and library, for tests and benchmarks that are programs of their own.
add_library(python_embed INTERFACE)
target_include_directories(python_embed SYSTEM INTERFACE ${QLX_PYTHON_INCLUDE})
target_link_libraries(python_embed INTERFACE ${QLX_PYTHON_LIBRARY})
