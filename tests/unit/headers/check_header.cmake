# cmake -DCOMPILER= -DSTANDARD= -DHEADER= -DINCLUDE= [-DGENERATED=] -P check_header.cmake
# Compiles one header as a caller would, with nothing of ours but its folder and
# that of the generated headers, and looks at what it includes. Only those of
# the model may pull in the mapper and its back end.

set(command ${COMPILER} -std=c++${STANDARD} -I${INCLUDE} -include ${HEADER} -x c++)
set(foreign_headers google/protobuf .pb.h glib dorv_bus zerklog mosquitto cJSON)
if(HEADER MATCHES "^vptz/model/")
  list(APPEND command -isystem ${GENERATED})
else()
  list(APPEND foreign_headers odb/ sqlite3)
endif()
set(warnings -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

execute_process(COMMAND ${command} ${warnings} -fsyntax-only /dev/null
  RESULT_VARIABLE result ERROR_VARIABLE errors)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${HEADER} does not compile alone as C++${STANDARD}:\n${errors}")
endif()

execute_process(COMMAND ${command} -M /dev/null RESULT_VARIABLE result OUTPUT_VARIABLE included)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "cannot list what ${HEADER} includes")
endif()
foreach(foreign IN LISTS foreign_headers)
  string(FIND "${included}" "${foreign}" position)
  if(NOT position EQUAL -1)
    message(FATAL_ERROR "${HEADER} pulls in ${foreign}")
  endif()
endforeach()
