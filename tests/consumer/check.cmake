# cmake -D BUILD=... -D CXX=... -D CXX_FLAGS=... -D COMMAND=... -P check.cmake
# Installs the build into a prefix of its own, moves it, and builds a consumer against it by find_package and, where
# there is one, by pkg-config.
set(folder ${BUILD}/consumer)
file(REMOVE_RECURSE ${folder})

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE output)
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(check program)
  run(${program} ${folder}/recordings/continuous.rec)
  if(NOT output STREQUAL "32 channels, 15360 samples\n")
    message(FATAL_ERROR "${program} says ${output}")
  endif()
endfunction()

run(${COMMAND} demo ${folder}/recordings)
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${folder}/first)
file(RENAME ${folder}/first ${folder}/prefix)

run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${folder}/build -G Ninja -D CMAKE_BUILD_TYPE=Release
    -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_CXX_FLAGS=${CXX_FLAGS} -D CMAKE_PREFIX_PATH=${folder}/prefix)
run(${CMAKE_COMMAND} --build ${folder}/build)
check(${folder}/build/consumer)

find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  file(GLOB_RECURSE pc ${folder}/prefix/*/wavelock.pc)
  cmake_path(GET pc PARENT_PATH pc_folder)
  set(ENV{PKG_CONFIG_PATH} ${pc_folder})
  run(${PKG_CONFIG} --cflags --libs wavelock)
  separate_arguments(found UNIX_COMMAND "${output}")
  separate_arguments(flags UNIX_COMMAND "${CXX_FLAGS}")
  run(${CXX} -std=c++20 ${flags} ${CMAKE_CURRENT_LIST_DIR}/main.cpp -o ${folder}/by_pkg_config ${found})
  check(${folder}/by_pkg_config)
endif()
