# Runs the package test of one kind; see CMakeLists.txt in this directory.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nexited with ${status}:\n${output}")
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
# An installed package must not depend on where it was installed.
file(RENAME ${prefix} ${WORK_DIR}/moved)
set(prefix ${WORK_DIR}/moved)

run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${WORK_DIR}/examples ${compiler} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/examples)
# An optional component whose dependency is missing is not found, and the rest of the package is.
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${WORK_DIR}/core-only ${compiler} -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_DISABLE_FIND_PACKAGE_Protobuf=ON -DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON)
# A component of another name is told.
file(WRITE ${WORK_DIR}/misspelt/CMakeLists.txt "cmake_minimum_required(VERSION 3.25)\nproject(Misspelt LANGUAGES CXX)\n"
     "find_package(Meridian COMPONENTS Serialisation)\n")
run(${CMAKE_COMMAND} -S ${WORK_DIR}/misspelt -B ${WORK_DIR}/misspelt ${compiler} -DCMAKE_PREFIX_PATH=${prefix})
if(NOT output MATCHES "Serialisation is not a component \\(the components are: Serialization,[ \n]+C,[ \n]+Presets\\)")
  message(FATAL_ERROR "find_package printed:\n${output}")
endif()

# By pkg-config, without exceptions, with every header of the core.
file(GLOB_RECURSE headers RELATIVE ${prefix}/include ${prefix}/include/meridian/*.h)
list(FILTER headers EXCLUDE REGEX "/(c|serialization|presets)/")
list(TRANSFORM headers REPLACE "(.+)" "#include \"\\1\"")
list(JOIN headers "\n" headers)
file(READ ${SOURCE_DIR}/examples/edit_command_line.cpp example)
file(WRITE ${WORK_DIR}/no_exceptions.cpp "${headers}\n${example}")
file(GLOB_RECURSE package ${prefix}/lib*/meridian.pc)
cmake_path(GET package PARENT_PATH packages)
set(ENV{PKG_CONFIG_PATH} ${packages})
run(pkg-config --cflags --libs meridian)
separate_arguments(options UNIX_COMMAND "${output}")
cmake_path(GET packages PARENT_PATH libraries)
run(${CXX_COMPILER} -std=c++20 -fno-exceptions ${WORK_DIR}/no_exceptions.cpp -o ${WORK_DIR}/no_exceptions ${options}
    -Wl,-rpath,${libraries})
run(${WORK_DIR}/no_exceptions)

# The C interface from a C project by pkg-config, without a C++ compiler.
if(C_COMPILER)
  run(pkg-config --cflags --libs meridian-c)
  separate_arguments(options UNIX_COMMAND "${output}")
  run(${C_COMPILER} -std=c11 -Wall -Wextra -Wpedantic -Werror ${SOURCE_DIR}/examples/check_job.c
      -o ${WORK_DIR}/check_job ${options} -Wl,-rpath,${libraries})
  foreach(program IN ITEMS ${WORK_DIR}/check_job ${WORK_DIR}/examples/check_job)
    run(${program} --set videoFrameRate 25 -dims 1920x1080 -out /out/a.mov)
    if(NOT output MATCHES "-dims: 1920 x 1080\n.*\\[-vr\\]\n\\[25.0\\]")
      message(FATAL_ERROR "the example printed:\n${output}")
    endif()
  endforeach()
endif()

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
set(cards)
foreach(number RANGE 1 40)
  file(WRITE ${WORK_DIR}/card${number} "foobar")
  list(APPEND cards ${WORK_DIR}/card${number})
endforeach()
run(${WORK_DIR}/examples/hash_files 3 ${cards})
string(REGEX MATCHALL "85944171f73967e8  [^\n]*/card[0-9]+\n" hashes "${output}")
list(LENGTH hashes hash_count)
if(NOT hash_count EQUAL 40)
  message(FATAL_ERROR "the example printed:\n${output}")
endif()

if(KIND STREQUAL shared)
  # The installed command finds the installed library, whose file name has the version.
  run(${prefix}/bin/meridian presets)
  file(GLOB libraries ${prefix}/lib*/libmeridian.so.0.2 ${prefix}/lib*/*/libmeridian.so.0.2)
  if(NOT libraries)
    message(FATAL_ERROR "no libmeridian.so.0.2 under ${prefix}")
  endif()
endif()
