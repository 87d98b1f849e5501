# A host takes the sources into its own build, as static libraries and by Makefiles, and plays a character.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)
build_host(${CMAKE_CURRENT_LIST_DIR}/add_subdirectory add_subdirectory "Unix Makefiles" -D TW2_SOURCE_DIR=${TW2_SOURCE_DIR})
run(${CMAKE_COMMAND} -E chdir ${TW2_SOURCE_DIR}/sample ${WORK_DIR}/add_subdirectory/game sprout.script sprout_skin.tw)
