# The three platform libraries behind the names vptz::dorv_bus, vptz::zerklog
# and vptz::protocol. Nothing else names an implementation.

if(VPTZ_PLATFORM STREQUAL bundled)
  add_subdirectory(platform)
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
endif()
