# What is installed, and how the libraries become versioned shared objects.
#
# Components: runtime (shared objects), development (headers, CMake and
# pkg-config files), service (vptzd), tools (vptzctl).

include(CMakePackageConfigHelpers)

option(VPTZ_INSTALL "Install the libraries and programs" ${PROJECT_IS_TOP_LEVEL})

# Programs and libraries find each other when they are moved together. A system
# folder is searched anyway, and Debian wants no path there.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND NOT DEFINED CMAKE_INSTALL_RPATH)
  file(RELATIVE_PATH vptz_libraries_from_programs
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/${vptz_libraries_from_programs}")
endif()

# An appliance's libraries may lie in folders of their own.
if(VPTZ_PLATFORM STREQUAL system AND NOT DEFINED CMAKE_INSTALL_RPATH_USE_LINK_PATH)
  set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)
endif()

set(vptz_config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vptz_client)

# vptz_shared_library(target): gives the target its version, and exports the
# symbols of the file lib<target>.map beside it.
function(vptz_shared_library target)
  set(map ${CMAKE_CURRENT_SOURCE_DIR}/lib${target}.map)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINK_DEPENDS ${map})
  target_link_options(${target} PRIVATE LINKER:--version-script=${map})
endfunction()

# vptz_install_library(target name): installs it as vptz::name.
function(vptz_install_library target name)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  if(VPTZ_INSTALL)
    install(TARGETS ${target} EXPORT vptz_clientTargets
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
  endif()
endfunction()

# The package files for the installed tree, and the same for the build tree.
function(vptz_install_package)
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vptz_clientConfig.cmake.in
    ${PROJECT_BINARY_DIR}/vptz_clientConfig.cmake INSTALL_DESTINATION ${vptz_config_folder})
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/vptz_clientConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
  export(EXPORT vptz_clientTargets NAMESPACE vptz:: FILE ${PROJECT_BINARY_DIR}/vptz_clientTargets.cmake)
  file(RELATIVE_PATH vptz_prefix_from_pkgconfig
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  foreach(module vptz_client vptz_model)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${module}.pc.in ${PROJECT_BINARY_DIR}/${module}.pc @ONLY)
  endforeach()

  install(EXPORT vptz_clientTargets NAMESPACE vptz:: DESTINATION ${vptz_config_folder} COMPONENT development)
  install(FILES ${PROJECT_BINARY_DIR}/vptz_clientConfig.cmake ${PROJECT_BINARY_DIR}/vptz_clientConfigVersion.cmake
    DESTINATION ${vptz_config_folder} COMPONENT development)
  install(FILES ${PROJECT_BINARY_DIR}/vptz_client.pc ${PROJECT_BINARY_DIR}/vptz_model.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vptz ${VPTZ_MODEL_INCLUDE_DIR}/vptz
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
    FILES_MATCHING PATTERN "*.h" PATTERN "*.hxx" PATTERN "*.ixx")

  if(TARGET vptzd)
    install(TARGETS vptzd DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT service)
    install(FILES ${PROJECT_SOURCE_DIR}/service/store/seed.sql DESTINATION ${CMAKE_INSTALL_DATADIR}/vptzd COMPONENT service)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/vptzd.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT service)
  endif()
  install(TARGETS vptzctl DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endfunction()
