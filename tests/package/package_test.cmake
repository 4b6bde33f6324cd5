# Installs the build to a folder of its own, then builds and runs main.cpp against it: once through the CMake package,
# once through pkg-config, and runs the installed command.
#
# cmake -D BUILD_DIR=... -D SOURCE_DIR=... -D WORK_DIR=... -D CXX=... -D FLAGS=... -P package_test.cmake
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/cmake -G Ninja -D CMAKE_PREFIX_PATH=${prefix}
    -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_CXX_FLAGS=${FLAGS})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake)
run(${WORK_DIR}/cmake/package_test)

file(GLOB_RECURSE pc_file ${prefix}/murvane-audio.pc)
get_filename_component(pc_dir ${pc_file} DIRECTORY)
get_filename_component(lib_dir ${pc_dir} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
execute_process(
  COMMAND pkg-config --cflags --libs murvane-audio
  OUTPUT_VARIABLE flags
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
separate_arguments(build_flags UNIX_COMMAND "${FLAGS}")
run(${CXX} -std=c++20 ${build_flags} ${SOURCE_DIR}/main.cpp ${flags} -Wl,-rpath,${lib_dir} -o
    ${WORK_DIR}/package_test_pc)
run(${WORK_DIR}/package_test_pc)

run(${prefix}/bin/murvane-audio --version)
