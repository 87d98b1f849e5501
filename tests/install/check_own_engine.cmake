# The recipe of platform/README.md, as it is printed there: the library on an engine that has nothing but the declarations
# of tests/contract/, which are all that the library asks for. Without RTTI, which none of it needs.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(READ ${TW2_SOURCE_DIR}/platform/README.md guide)
string(REGEX MATCH "```cmake\n([^`]*)```" recipe "${guide}")
if(NOT recipe)
  message(FATAL_ERROR "platform/README.md prints no recipe")
endif()
set(host ${WORK_DIR}/own_engine_host)
file(REMOVE_RECURSE ${host})
file(MAKE_DIRECTORY ${host})
file(WRITE ${host}/CMakeLists.txt "${CMAKE_MATCH_1}")
file(COPY ${CMAKE_CURRENT_LIST_DIR}/own_engine/main.cpp DESTINATION ${host})
file(CREATE_LINK ${TW2_SOURCE_DIR} ${host}/tw2 SYMBOLIC)
# As the guide says: cp -r tw2/tests/contract engine
file(CREATE_LINK ${TW2_SOURCE_DIR}/tests/contract ${host}/engine SYMBOLIC)
build_host(${host} own_engine Ninja -D CMAKE_CXX_FLAGS=-fno-rtti)
run(${WORK_DIR}/own_engine/game ${TW2_SOURCE_DIR}/sample/sprout_dance.tw)
