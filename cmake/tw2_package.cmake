# What `cpack --preset deb` and `cpack --preset source` make of the project: Debian packages of what is installed, one for
# each component, and an archive of the sources.
set(CPACK_PACKAGE_NAME tw2)
set(CPACK_PACKAGE_VENDOR "The TW2 developers")
set(CPACK_PACKAGE_CONTACT "The TW2 developers <tw2@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_COMPONENTS_ALL library development)
if(TARGET tw2_cli)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The libraries of one package are what the others are linked with: they are looked for where they were built.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/platform)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(own_library "libtw2-${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libtw2-${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "${PROJECT_DESCRIPTION}: the libraries that programs run with.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtw2-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${own_library})
# What the component `render` of the CMake package is linked with.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libepoxy-dev, libegl-dev, libgif-dev, libimagequant-dev, libwebp-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "${PROJECT_DESCRIPTION}: headers, the renderer, and what CMake and pkg-config find them by.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tw2-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS ${own_library})
# What it opens itself when it draws and when it shows a window: drivers, and letters.
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "libegl1, libegl-mesa0, libgl1-mesa-dri, fonts-dejavu-core")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "${PROJECT_DESCRIPTION}: the command that converts, shows and draws models.")

set(CPACK_SOURCE_GENERATOR TXZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME tw2-${PROJECT_VERSION})
set(CPACK_SOURCE_IGNORE_FILES "/\\.git(/|$)" "^${PROJECT_SOURCE_DIR}/build/" "^${PROJECT_SOURCE_DIR}/out/" "/node_modules/" "~$")
include(CPack)
