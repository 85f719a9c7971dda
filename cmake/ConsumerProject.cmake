# Shared by the install and package tests: runs commands that must succeed, and configures,
# builds and runs examples/consumer against an installed zenutl under PREFIX, with find_package
# and with pkg-config. With a trail path, the consumer records a trail there.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "command failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(run_output "${out}" PARENT_SCOPE)
endfunction()

function(build_and_run_consumer source_dir prefix work_dir sanitize trail)
  set(flags "")
  if(sanitize)
    set(flags "-fsanitize=address,undefined")
  endif()
  run(${CMAKE_COMMAND} -S ${source_dir}/examples/consumer -B ${work_dir}/build
      -DCMAKE_PREFIX_PATH=${prefix} "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
  run(${CMAKE_COMMAND} --build ${work_dir}/build)
  run(${work_dir}/build/consumer ${trail})
  run(${work_dir}/build/consumer_pkgconfig)
endfunction()
