# What `cmake --install` lays down: both libraries, their headers, and the files by which CMake and pkg-config find them.
include(CMakePackageConfigHelpers)

set(tw2_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tw2)

install(TARGETS tw2 tw2_platform EXPORT tw2Targets
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  RUNTIME COMPONENT library
  ARCHIVE COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development FILES_MATCHING PATTERN *.h)
install(FILES ${PROJECT_BINARY_DIR}/generated/tw2/export.h ${PROJECT_BINARY_DIR}/generated/tw2/version.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tw2
  COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tw2-platform
  COMPONENT development FILES_MATCHING PATTERN *.h)
install(FILES ${PROJECT_BINARY_DIR}/generated/platform/export.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tw2-platform/platform COMPONENT development)

# The character that the documents play.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/sample DESTINATION ${CMAKE_INSTALL_DATADIR}/tw2 COMPONENT development)

# The renderer is a component of the package: who does not ask for it needs no epoxy.
if(TARGET tw2_render)
  install(TARGETS tw2_render EXPORT tw2RenderTargets ARCHIVE COMPONENT development)
  foreach(header bounds offscreen_context overlays picture_target render_exception scene_renderer studio view)
    install(FILES ${PROJECT_SOURCE_DIR}/render/${header}.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tw2-render/render
      COMPONENT development)
  endforeach()
  install(EXPORT tw2RenderTargets NAMESPACE tw2:: FILE tw2RenderTargets.cmake DESTINATION ${tw2_cmake_dir}
    COMPONENT development)
endif()

# The command, and what converts models with it in a build.
if(TARGET tw2_cli)
  install(TARGETS tw2_cli EXPORT tw2ToolsTargets COMPONENT tools)
  install(EXPORT tw2ToolsTargets NAMESPACE tw2:: FILE tw2ToolsTargets.cmake DESTINATION ${tw2_cmake_dir}
    COMPONENT tools)
  if(TARGET tw2_convert)
    install(FILES ${PROJECT_SOURCE_DIR}/cmake/tw2_convert.cmake DESTINATION ${tw2_cmake_dir} COMPONENT tools)
  endif()
endif()

install(EXPORT tw2Targets NAMESPACE tw2:: FILE tw2Targets.cmake DESTINATION ${tw2_cmake_dir} COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tw2Config.cmake.in ${PROJECT_BINARY_DIR}/tw2Config.cmake
  INSTALL_DESTINATION ${tw2_cmake_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tw2ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tw2Config.cmake ${PROJECT_BINARY_DIR}/tw2ConfigVersion.cmake
  DESTINATION ${tw2_cmake_dir} COMPONENT development)

# The prefix is found from where tw2.pc lies, so that an installed tree can be moved.
file(RELATIVE_PATH tw2_pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
  set(tw2_pc_definitions " -DTW2_STATIC_DEFINE -DTW2_PLATFORM_STATIC_DEFINE")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/tw2.pc.in ${PROJECT_BINARY_DIR}/tw2.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tw2.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
