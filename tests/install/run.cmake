# Shared by the checks of this folder, each of which CMake runs as a script.

# Runs a command; its output is shown when it fails.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "${command}\nfailed (${status}):\n${output}")
  endif()
endfunction()

# Runs a command that has to fail with a message that matches.
function(expect_failure message)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  # Long lines are wrapped where messages are shown.
  string(REGEX REPLACE "[ \n]+" " " output "${output}")
  list(JOIN ARGN " " command)
  if(status EQUAL 0)
    message(FATAL_ERROR "${command}\nsucceeded, and should have failed")
  elseif(NOT output MATCHES "${message}")
    message(FATAL_ERROR "${command}\nfailed without saying \"${message}\":\n${output}")
  endif()
endfunction()

# Configures and builds the host project in the folder `source` as WORK_DIR/<name>, with more options for CMake.
function(build_host source name generator)
  file(REMOVE_RECURSE ${WORK_DIR}/${name})
  run(${CMAKE_COMMAND} -G ${generator} -S ${source} -B ${WORK_DIR}/${name}
    -D CMAKE_CXX_COMPILER=${CXX_COMPILER} -D CMAKE_CXX_COMPILER_LAUNCHER=${CXX_LAUNCHER} ${ARGN})
  run(${CMAKE_COMMAND} --build ${WORK_DIR}/${name} --parallel 2)
endfunction()
