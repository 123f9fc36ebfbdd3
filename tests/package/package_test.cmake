# One run of the package test; see CMakeLists.txt beside it.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nended with ${status}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
set(compiler -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})

if(KIND STREQUAL static)
  set(BINARY_DIR ${WORK_DIR}/library)
  run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${BINARY_DIR} ${compiler} -DCMAKE_BUILD_TYPE=Debug -DBUILD_SHARED_LIBS=OFF
      -DMERIDIAN_BUILD_COMMAND=OFF -DMERIDIAN_BUILD_TESTS=OFF -DMERIDIAN_BUILD_BENCHMARKS=OFF)
  run(${CMAKE_COMMAND} --build ${BINARY_DIR})
endif()
run(${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${prefix})
# Moved, since a package may not know where it was installed.
file(RENAME ${prefix} ${WORK_DIR}/moved)
set(prefix ${WORK_DIR}/moved)

run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${WORK_DIR}/examples ${compiler} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/examples)
# A component that was asked for as optional and lacks its dependency is left out.
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${WORK_DIR}/core-only ${compiler} -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_DISABLE_FIND_PACKAGE_Protobuf=ON -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON)
run(${WORK_DIR}/examples/stored_job)
if(PRESETS)
  run(${WORK_DIR}/examples/stored_preset)
  if(NOT output MATCHES "Dailies: HD \\(1280 x 720\\)" OR NOT output MATCHES "\\[-dims\\]\n\\[1280.000000x720.000000\\]")
    message(FATAL_ERROR "the example printed:\n${output}")
  endif()
endif()
run(${WORK_DIR}/examples/edit_command_line)
if(NOT output MATCHES "unknown: -fooo 1" OR NOT output MATCHES "\\[-in_0_1\\]\n\\[/card/A001C002.mov\\]")
  message(FATAL_ERROR "the example printed:\n${output}")
endif()

if(KIND STREQUAL shared)
  # The installed command finds the installed library, and the shared library carries its version.
  run(${prefix}/bin/meridian presets)
  file(GLOB libraries ${prefix}/lib*/libmeridian.so.0.1 ${prefix}/lib*/*/libmeridian.so.0.1)
  if(NOT libraries)
    message(FATAL_ERROR "no libmeridian.so.0.1 under ${prefix}")
  endif()
endif()
