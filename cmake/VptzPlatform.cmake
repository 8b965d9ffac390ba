# The three platform libraries behind the names vptz::dorv_bus, vptz::zerklog
# and vptz::protocol. Nothing else names an implementation.

# The names of the bus methods belong to the messages. The list is no library: it
# is this source tree's own with either platform, and is not installed.
add_library(vptz_method_names INTERFACE)
add_library(vptz::method_names ALIAS vptz_method_names)
target_include_directories(vptz_method_names INTERFACE ${PROJECT_SOURCE_DIR}/platform/vptzprotocol/include)

if(VPTZ_PLATFORM STREQUAL bundled)
  add_subdirectory(platform)
  set(vptz_bus_serves TRUE)
else()
  function(vptz_find_platform_library name header library)
    find_path(VPTZ_${name}_INCLUDE_DIR ${header} REQUIRED)
    find_library(VPTZ_${name}_LIBRARY ${library} REQUIRED)
    mark_as_advanced(VPTZ_${name}_INCLUDE_DIR VPTZ_${name}_LIBRARY)
    add_library(vptz::${name} UNKNOWN IMPORTED GLOBAL)
    set_target_properties(vptz::${name} PROPERTIES
      IMPORTED_LOCATION ${VPTZ_${name}_LIBRARY}
      INTERFACE_INCLUDE_DIRECTORIES ${VPTZ_${name}_INCLUDE_DIR})
  endfunction()

  find_package(Protobuf REQUIRED)
  vptz_find_platform_library(dorv_bus dorv_bus.h dorv_bus)
  vptz_find_platform_library(zerklog zerklog.h zerklog)
  vptz_find_platform_library(protocol vptz/vptz.pb.h vptzprotocol)
  target_link_libraries(vptz::protocol INTERFACE protobuf::libprotobuf)

  # The half of the bus that serves, which the client library does not need.
  find_path(VPTZ_dorv_bus_service_INCLUDE_DIR dorv_bus_service.h HINTS ${VPTZ_dorv_bus_INCLUDE_DIR})
  mark_as_advanced(VPTZ_dorv_bus_service_INCLUDE_DIR)
  if(VPTZ_dorv_bus_service_INCLUDE_DIR)
    target_include_directories(vptz::dorv_bus INTERFACE ${VPTZ_dorv_bus_service_INCLUDE_DIR})
    set(vptz_bus_serves TRUE)
  else()
    set(vptz_bus_serves FALSE)
  endif()
endif()

option(VPTZ_BUILD_SERVICE "Build the reference service vptzd" ${vptz_bus_serves})
if(VPTZ_BUILD_SERVICE AND NOT vptz_bus_serves)
  message(FATAL_ERROR "vptzd needs the bus's service half: dorv_bus_service.h was not found. "
    "Say where it lies (CMAKE_PREFIX_PATH), or leave vptzd out: -DVPTZ_BUILD_SERVICE=OFF")
endif()
