# Converts two small models, written here, in a stranger's build, and looks at what is converted again after a change.
# With every generator that is there: each reads the list of what a model was read with in its own way.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

set(prefix ${WORK_DIR}/moved)
set(models "${WORK_DIR}/the models")
file(REMOVE_RECURSE ${WORK_DIR})
foreach(component library development tools)
  run(${CMAKE_COMMAND} --install ${TW2_BINARY_DIR} --prefix ${WORK_DIR}/prefix --component ${component})
endforeach()
file(RENAME ${WORK_DIR}/prefix ${prefix})

# Two bones in a row, the second of which turns or, with another name of the clip, does the same under that name.
function(write_model file clip)
  # Times 0 and 1, two rotations.
  set(bytes "AAAAAAAAgD8AAAAAAAAAAAAAAAAAAIA/AAAAAAAAAAAAAIA/AAAAAA==")
  file(WRITE ${file} "{\"asset\":{\"version\":\"2.0\"},
    \"buffers\":[{\"byteLength\":40,\"uri\":\"data:application/octet-stream;base64,${bytes}\"}],
    \"bufferViews\":[{\"buffer\":0,\"byteOffset\":0,\"byteLength\":8},{\"buffer\":0,\"byteOffset\":8,\"byteLength\":32}],
    \"accessors\":[{\"bufferView\":0,\"componentType\":5126,\"count\":2,\"type\":\"SCALAR\"},
                   {\"bufferView\":1,\"componentType\":5126,\"count\":2,\"type\":\"VEC4\"}],
    \"nodes\":[{\"name\":\"hip\",\"children\":[1]},{\"name\":\"leg\",\"translation\":[0,1,0]}],
    \"animations\":[{\"name\":\"${clip}\",\"samplers\":[{\"input\":0,\"output\":1}],
                     \"channels\":[{\"sampler\":0,\"target\":{\"node\":1,\"path\":\"rotation\"}}]}]}")
endfunction()

# Builds; fails unless exactly the objects of the list are converted.
function(expect_converted build)
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${build} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "the build failed:\n${output}")
  endif()
  string(REGEX MATCHALL "Converting [a-z-]+" converted "${output}")
  list(SORT converted)
  if(NOT converted STREQUAL "${ARGN}")
    message(FATAL_ERROR "expected \"${ARGN}\", found \"${converted}\" in:\n${output}")
  endif()
endfunction()

function(expect_text file text)
  file(READ ${file} content)
  string(FIND "${content}" "${text}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "${file} has no \"${text}\":\n${content}")
  endif()
endfunction()

set(generators)
find_program(ninja ninja)
find_program(make make)
if(ninja)
  list(APPEND generators Ninja)
endif()
if(make)
  list(APPEND generators "Unix Makefiles")
endif()
foreach(generator IN LISTS generators)
  set(build "${WORK_DIR}/build by ${generator}")
  file(REMOVE_RECURSE "${models}")
  write_model("${models}/Two-Bones.gltf" kick)
  write_model("${models}/moves.gltf" wave)
  file(WRITE "${models}/moves.events" "wave 0.5 hello\n")
  run(${CMAKE_COMMAND} -G ${generator} -S ${CMAKE_CURRENT_LIST_DIR}/convert -B ${build} -D CMAKE_PREFIX_PATH=${prefix}
    -D MODELS=${models})
  file(READ ${build}/scripts scripts)
  list(GET scripts 0 game)
  list(GET scripts 1 both)

  expect_converted(${build} "Converting both" "Converting two-bones")
  expect_text(${game} "name \"kick\"")
  expect_text(${both} "hello")
  expect_converted(${build})
  # What a model was read with is known from the conversion alone.
  file(WRITE "${models}/moves.events" "wave 0.5 goodbye\n")
  expect_converted(${build} "Converting both")
  expect_text(${both} "goodbye")
  write_model("${models}/Two-Bones.gltf" jump)
  expect_converted(${build} "Converting both" "Converting two-bones")
  expect_text(${game} "name \"jump\"")
  expect_converted(${build})
endforeach()
