# libvellim.so: all rooms in one shared object that exports what include/ declares and nothing else.

get_property(rooms GLOBAL PROPERTY VELLIM_ROOMS)
file(WRITE ${CMAKE_BINARY_DIR}/empty.cpp "")
add_library(vellim SHARED ${CMAKE_BINARY_DIR}/empty.cpp)
add_library(vellim::vellim ALIAS vellim)
set_target_properties(vellim PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/vellim.map)
target_include_directories(vellim INTERFACE
  $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_options(vellim PRIVATE
  -Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/vellim.map -Wl,-Bsymbolic-functions)
if(NOT VELLIM_SANITIZE)
  target_link_options(vellim PRIVATE -Wl,--no-undefined)
endif()
target_link_libraries(vellim PRIVATE vellim_options
  -Wl,--whole-archive ${rooms} -Wl,--no-whole-archive)

install(TARGETS vellim EXPORT vellimTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/vellim DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vellimTargets NAMESPACE vellim::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vellim)

include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/vellimConfig.cmake.in ${CMAKE_BINARY_DIR}/vellimConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vellim)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/vellimConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/vellimConfig.cmake ${CMAKE_BINARY_DIR}/vellimConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vellim)

# Relative, so that `cmake --install --prefix` may choose where.
file(RELATIVE_PATH VELLIM_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/vellim.pc.in ${CMAKE_BINARY_DIR}/vellim.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/vellim.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
