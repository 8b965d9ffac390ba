# Run by the installation: puts the configuration file where the library reads
# it, below DESTDIR, unless a file is there. Where that folder cannot be written
# it says so in one line, and the installation goes on.
#
# SOURCE: the file; CONFIG_FILE: where the library reads it.
set(target $ENV{DESTDIR}${CONFIG_FILE})
if(EXISTS ${target})
  message(STATUS "Kept: ${target}")
  return()
endif()
cmake_path(GET target PARENT_PATH folder)
execute_process(COMMAND ${CMAKE_COMMAND} -E make_directory ${folder} RESULT_VARIABLE failed ERROR_QUIET)
if(NOT failed)
  file(COPY_FILE ${SOURCE} ${target} RESULT failed)
endif()
if(failed)
  message(NOTICE "-- Not installed: ${target} cannot be written. The library opens no database without it: copy ${SOURCE} there.")
else()
  message(STATUS "Installing: ${target}")
endif()
