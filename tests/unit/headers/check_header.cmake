# cmake -DCOMPILER= -DSTANDARD= -DHEADER= -DINCLUDE= -P check_header.cmake
# Compiles one header as a caller would, with nothing of ours but its folder,
# and looks at what it includes.

set(command ${COMPILER} -std=c++${STANDARD} -I${INCLUDE} -include ${HEADER} -x c++)
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
foreach(foreign google/protobuf .pb.h glib odb/ dorv_bus zerklog sqlite3 mosquitto cJSON)
  string(FIND "${included}" "${foreign}" position)
  if(NOT position EQUAL -1)
    message(FATAL_ERROR "${HEADER} pulls in ${foreign}")
  endif()
endforeach()
