# What `cmake --install` lays down: both libraries, their headers, and the files by which CMake and pkg-config find them.
include(CMakePackageConfigHelpers)

set(tw2_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tw2)

install(TARGETS tw2 tw2_platform EXPORT tw2Targets
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  RUNTIME COMPONENT library
  ARCHIVE COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development FILES_MATCHING PATTERN *.h)
install(FILES ${PROJECT_BINARY_DIR}/generated/tw2/export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tw2
  COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tw2-platform
  COMPONENT development FILES_MATCHING PATTERN *.h)
install(FILES ${PROJECT_BINARY_DIR}/generated/platform/export.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tw2-platform/platform COMPONENT development)

install(EXPORT tw2Targets NAMESPACE tw2:: FILE tw2Targets.cmake DESTINATION ${tw2_cmake_dir} COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tw2Config.cmake.in ${PROJECT_BINARY_DIR}/tw2Config.cmake
  INSTALL_DESTINATION ${tw2_cmake_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tw2ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tw2Config.cmake ${PROJECT_BINARY_DIR}/tw2ConfigVersion.cmake
  DESTINATION ${tw2_cmake_dir} COMPONENT development)

# The prefix is found from where tw2.pc lies, so that an installed tree can be moved.
file(RELATIVE_PATH tw2_pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/tw2.pc.in ${PROJECT_BINARY_DIR}/tw2.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tw2.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
