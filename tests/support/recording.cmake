# Bus and log for unit tests of the client library, instead of the real ones.
add_library(vptz_recording_platform STATIC recording_bus.cc recording_log.cc)
target_include_directories(vptz_recording_platform PUBLIC
  ${PROJECT_SOURCE_DIR}/tests
  $<TARGET_PROPERTY:vptz::dorv_bus,INTERFACE_INCLUDE_DIRECTORIES>
  $<TARGET_PROPERTY:vptz::zerklog,INTERFACE_INCLUDE_DIRECTORIES>)
target_link_libraries(vptz_recording_platform PUBLIC vptz::protocol vptz_test_support)
