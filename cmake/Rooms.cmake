# A room is a folder with a target of its own. Its headers are reached as "room/header.h" through an
# include root that holds that room alone, so that a file can only include what its target links.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

add_library(vellim_options INTERFACE)
target_compile_options(vellim_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual -Wundef
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual>
  -Werror)
if(VELLIM_SANITIZE)
  target_compile_options(vellim_options INTERFACE
    -fsanitize=${VELLIM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vellim_options INTERFACE -fsanitize=${VELLIM_SANITIZE})
endif()

# The public headers.
add_library(vellim_include INTERFACE)
target_include_directories(vellim_include INTERFACE
  $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include>)

set_property(GLOBAL PROPERTY VELLIM_ROOMS "")

# vellim_room(NAME [USES ROOM...]): the static library vellim_NAME of all sources of folder NAME and
# those in it.
function(vellim_room name)
  cmake_parse_arguments(ROOM "" "" "USES" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${name}/*.cpp)
  add_library(vellim_${name} STATIC ${sources})
  set(root ${CMAKE_BINARY_DIR}/rooms/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${name} ${root}/${name} SYMBOLIC)
  target_include_directories(vellim_${name} PUBLIC ${root})
  target_link_libraries(vellim_${name} PUBLIC vellim_include PRIVATE vellim_options)
  foreach(used IN LISTS ROOM_USES)
    target_link_libraries(vellim_${name} PUBLIC vellim_${used})
  endforeach()
  set_property(GLOBAL APPEND PROPERTY VELLIM_ROOMS vellim_${name})
endfunction()
