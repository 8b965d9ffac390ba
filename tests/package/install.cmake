# Installs the build, and a second time where it is moved to afterwards.
file(REMOVE_RECURSE ${PREFIX} ${MOVED})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${PREFIX} ${MOVED})
