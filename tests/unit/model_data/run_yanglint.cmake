# Runs yanglint on the station model, and on DATA_FILE if given; fails on a
# non-zero exit and on any message, so that warnings count as failures.
# Submodules are parsed through their main module.
file(GLOB _files ${MODEL_DIR}/*.yang)
set(_args -p ${MODEL_DIR})
foreach(_file ${_files})
  file(READ ${_file} _text LIMIT 200)
  if(NOT _text MATCHES "^submodule")
    list(APPEND _args ${_file})
  endif()
endforeach()
if(DATA_FILE)
  list(APPEND _args ${DATA_FILE})
endif()
execute_process(COMMAND ${YANGLINT} ${_args}
                RESULT_VARIABLE _rc OUTPUT_VARIABLE _out ERROR_VARIABLE _err)
if(NOT _rc EQUAL 0)
  message(FATAL_ERROR "yanglint failed (${_rc}):\n${_out}${_err}")
endif()
if(NOT "${_out}${_err}" STREQUAL "")
  message(FATAL_ERROR "yanglint reported:\n${_out}${_err}")
endif()
