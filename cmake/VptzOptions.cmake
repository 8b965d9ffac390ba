# What can be chosen at configure time.

set(VPTZ_PLATFORM bundled CACHE STRING "Bus, log and message libraries: bundled, or system for those of an appliance")
set_property(CACHE VPTZ_PLATFORM PROPERTY STRINGS bundled system)
if(NOT VPTZ_PLATFORM MATCHES "^(bundled|system)$")
  message(FATAL_ERROR "VPTZ_PLATFORM is \"${VPTZ_PLATFORM}\"; it must be bundled or system")
endif()

set(VPTZ_CONFIG_FILE /etc/vptz.conf CACHE STRING "Configuration file that the library reads")
set(VPTZ_DATABASE_FILE /var/lib/dorv/vptz.db CACHE STRING "Database that the library shares with the service")

set(VPTZD_SEED_FILE ${CMAKE_INSTALL_FULL_DATADIR}/vptzd/seed.sql CACHE STRING
  "SQL script with which the service fills a database")

# VPTZ_BUILD_SERVICE is with the platform (VptzPlatform.cmake), on which its default depends.
option(VPTZ_BUILD_PYTHON "Build the Python module" OFF)
option(VPTZ_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(VPTZ_BUILD_BENCHMARKS "Build the benchmarks" OFF)
option(VPTZ_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)
set(VPTZ_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined or thread")

# A build whose configuration file lies in its own tree starts with the
# installed one, and then keeps what is changed there.
cmake_path(IS_PREFIX PROJECT_BINARY_DIR "${VPTZ_CONFIG_FILE}" NORMALIZE vptz_config_in_build)
if(vptz_config_in_build AND NOT EXISTS "${VPTZ_CONFIG_FILE}")
  cmake_path(GET VPTZ_CONFIG_FILE PARENT_PATH vptz_config_folder)
  file(MAKE_DIRECTORY "${vptz_config_folder}")
  file(COPY_FILE "${PROJECT_SOURCE_DIR}/config/vptz.conf" "${VPTZ_CONFIG_FILE}")
endif()
