# The code that the object-relational mapper generates from the annotated
# entity classes: NAME-odb.{hxx,ixx,cxx} for each class, and the schema catalog.

find_program(VPTZ_ODB odb REQUIRED)
find_library(VPTZ_LIBODB odb REQUIRED)
find_library(VPTZ_LIBODB_SQLITE odb-sqlite REQUIRED)

# Parents before children: the order of the tables.
set(VPTZ_ENTITIES device_type protocol device media media_parameter movement movement_parameter ptz preset event
  event_information setting)

set(vptz_entity_include ${PROJECT_SOURCE_DIR}/include)
set(VPTZ_MODEL_INCLUDE_DIR ${PROJECT_BINARY_DIR}/model/include)
set(vptz_generated_headers ${VPTZ_MODEL_INCLUDE_DIR}/vptz/model)
set(vptz_generated_sources ${PROJECT_BINARY_DIR}/model/src)
file(MAKE_DIRECTORY ${vptz_generated_headers} ${vptz_generated_sources})

set(vptz_odb ${VPTZ_ODB} --std c++11 --database sqlite --generate-query --generate-prepared -I ${vptz_entity_include}
  --hxx-prologue "#include <vptz/export.h>"
  --hxx-prologue "#include <vptz/model/odb.h>"
  --include-with-brackets --include-prefix vptz/model --export-symbol VPTZ_API)
file(GLOB vptz_entity_headers CONFIGURE_DEPENDS ${vptz_entity_include}/vptz/model/*.h)

set(VPTZ_MODEL_SOURCES)
foreach(entity IN LISTS VPTZ_ENTITIES)
  set(outputs
    ${vptz_generated_headers}/${entity}-odb.hxx
    ${vptz_generated_headers}/${entity}-odb.ixx
    ${vptz_generated_headers}/${entity}-odb.cxx)
  add_custom_command(
    OUTPUT ${outputs}
    COMMAND ${vptz_odb} --output-dir ${vptz_generated_headers} ${vptz_entity_include}/vptz/model/${entity}.h
    DEPENDS ${vptz_entity_headers}
    COMMENT "Mapping ${entity}"
    VERBATIM)
  list(APPEND VPTZ_MODEL_SOURCES ${vptz_generated_headers}/${entity}-odb.cxx)
endforeach()

# All classes at once, against the change log. The mapper rewrites a change log
# that lacks a change; a build must not, so it works on a copy and fails when
# the copy comes out different.
set(change_log ${PROJECT_SOURCE_DIR}/src/model/changelog.xml)
set(next_change_log ${vptz_generated_sources}/changelog.xml)
list(TRANSFORM VPTZ_ENTITIES PREPEND ${vptz_entity_include}/vptz/model/ OUTPUT_VARIABLE headers)
list(TRANSFORM headers APPEND .h)
set(vptz_odb_schema ${vptz_odb} --generate-schema --schema-format separate --schema-name vptz
  --schema-prologue "#include <vptz/model/odb.h>" --at-once --input-name vptz)
add_custom_command(
  OUTPUT ${vptz_generated_sources}/vptz-schema.cxx
  COMMAND ${CMAKE_COMMAND} -E copy ${change_log} ${next_change_log}
  COMMAND ${vptz_odb_schema} --changelog ${next_change_log} --output-dir ${vptz_generated_sources} ${headers}
  COMMAND ${CMAKE_COMMAND} -DOLD=${change_log} -DNEW=${next_change_log}
    -P ${PROJECT_SOURCE_DIR}/cmake/CompareChangeLogs.cmake
  DEPENDS ${vptz_entity_headers} ${change_log}
  COMMENT "Generating the schema catalog"
  VERBATIM)

# For scripts/change-log: the change log as it should be, where the script finds it.
set(change_log_folder ${PROJECT_BINARY_DIR}/model/change-log)
file(MAKE_DIRECTORY ${change_log_folder})
add_custom_target(next_change_log
  COMMAND ${CMAKE_COMMAND} -E copy ${change_log} ${change_log_folder}/changelog.xml
  COMMAND ${vptz_odb_schema} --changelog ${change_log_folder}/changelog.xml --output-dir ${change_log_folder}
    ${headers}
  VERBATIM)

list(APPEND VPTZ_MODEL_SOURCES ${vptz_generated_sources}/vptz-schema.cxx)
set_source_files_properties(${VPTZ_MODEL_SOURCES} PROPERTIES COMPILE_OPTIONS -w SKIP_LINTING ON)
