# For the toolchain files: nothing of the machine that builds is taken for the one that is built for, but headers that need
# nothing more than a compiler. Tests run through CMAKE_CROSSCOMPILING_EMULATOR.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
if(NOT TW2_STB_INCLUDE_DIR AND EXISTS /usr/include/stb)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers)
  file(CREATE_LINK /usr/include/stb ${CMAKE_BINARY_DIR}/headers/stb SYMBOLIC)
  set(TW2_STB_INCLUDE_DIR ${CMAKE_BINARY_DIR}/headers CACHE PATH "Folder that contains stb/stb_image.h")
endif()
foreach(part TOOLS RENDER CONVERT WINDOW)
  set(TW2_BUILD_${part} OFF CACHE BOOL "")
endforeach()
