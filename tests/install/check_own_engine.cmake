# examples/own_engine, as its page says it is copied and built: the library on an engine that has nothing but the
# declarations which are all that the library asks for. Without RTTI, which none of it needs.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

set(host ${WORK_DIR}/own_engine_host)
file(REMOVE_RECURSE ${host})
file(COPY ${TW2_SOURCE_DIR}/examples/own_engine/ DESTINATION ${host})
file(CREATE_LINK ${TW2_SOURCE_DIR} ${host}/tw2 SYMBOLIC)
build_host(${host} own_engine Ninja -D CMAKE_CXX_FLAGS=-fno-rtti)
run(${WORK_DIR}/own_engine/game ${TW2_SOURCE_DIR}/sample/sprout_dance.tw)

file(READ ${TW2_SOURCE_DIR}/platform/README.md guide)
file(READ ${host}/CMakeLists.txt recipe)
string(FIND "${guide}" "```cmake\n${recipe}```" printed)
if(printed EQUAL -1)
  message(FATAL_ERROR "platform/README.md prints another file than examples/own_engine/CMakeLists.txt")
endif()
