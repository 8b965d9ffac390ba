# Fails when the classes have columns that the schema's change log does not tell of.
file(READ ${OLD} old)
file(READ ${NEW} new)
if(NOT old STREQUAL new)
  message(FATAL_ERROR "The classes of include/vptz/model differ from the change log ${OLD}: "
    "run scripts/change-log (docs/adding-a-column.md).")
endif()
