# Converts models as a part of a build.
#
#   tw2_convert(NAME MODEL... [OUTPUT folder] [OPTIONS option...])
#
# Runs `tw2 convert` whenever a model, or a file that it was read with (buffers, pictures, materials, events), has changed.
# NAME is a target of the project, which is then built after the conversion, or the name of a new target that belongs to
# `all`. Several models are put together into one character. OUTPUT is the folder that is written to (the current binary
# folder), OPTIONS are further options of `tw2 convert`. NAME_SCRIPT is set to the full name of the script.
#
#   tw2_convert(game models/soldier.glb OUTPUT ${CMAKE_BINARY_DIR}/data OPTIONS --root-motion Hips)
function(tw2_convert name)
  cmake_policy(SET CMP0116 NEW)  # names in depfiles are what they say
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "OUTPUT" "OPTIONS")
  if(NOT arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "tw2_convert(${name}): no model is given")
  endif()
  if(NOT TARGET tw2::tw2_cli)
    message(FATAL_ERROR "tw2_convert(${name}): the command tw2 is not installed (component tools)")
  endif()
  set(models)
  foreach(model IN LISTS arg_UNPARSED_ARGUMENTS)
    get_filename_component(model ${model} ABSOLUTE BASE_DIR ${CMAKE_CURRENT_SOURCE_DIR})
    list(APPEND models ${model})
  endforeach()
  if(NOT arg_OUTPUT)
    set(arg_OUTPUT ${CMAKE_CURRENT_BINARY_DIR})
  endif()
  get_filename_component(folder ${arg_OUTPUT} ABSOLUTE BASE_DIR ${CMAKE_CURRENT_BINARY_DIR})

  # The files are called as the first model, or as the options say; the command makes such names safe in the same way.
  list(GET models 0 first)
  get_filename_component(object ${first} NAME_WLE)
  list(FIND arg_OPTIONS --name at)
  if(at GREATER -1)
    math(EXPR at "${at} + 1")
    list(GET arg_OPTIONS ${at} object)
  else()
    list(APPEND arg_OPTIONS --name ${object})
  endif()
  string(TOLOWER ${object} object)
  string(REGEX REPLACE "[^a-z0-9-]" "_" object ${object})
  list(LENGTH models count)
  if(count GREATER 1)
    list(APPEND arg_OPTIONS --together)
  endif()

  set(script ${folder}/${object}.script)
  string(SHA1 key ${script})
  string(SUBSTRING ${key} 0 8 key)
  set(depfile ${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/tw2_convert_${key}.d)
  add_custom_command(OUTPUT ${script}
    COMMAND tw2::tw2_cli convert ${models} -o ${folder} --quiet --depfile ${depfile} ${arg_OPTIONS}
    DEPENDS ${models} tw2::tw2_cli
    DEPFILE ${depfile}
    COMMENT "Converting ${object}"
    VERBATIM)
  if(TARGET ${name})
    add_custom_target(${name}_convert_${key} DEPENDS ${script})
    add_dependencies(${name} ${name}_convert_${key})
  else()
    add_custom_target(${name} ALL DEPENDS ${script})
  endif()
  set(${name}_SCRIPT ${script} PARENT_SCOPE)
endfunction()
