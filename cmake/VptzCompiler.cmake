# How everything is compiled.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

find_program(VPTZ_CCACHE ccache)
if(VPTZ_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${VPTZ_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${VPTZ_CCACHE})
endif()

add_compile_options(-Wall -Wextra -Wpedantic)
if(VPTZ_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()

if(VPTZ_SANITIZE)
  add_compile_options(-fsanitize=${VPTZ_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VPTZ_SANITIZE})
endif()
