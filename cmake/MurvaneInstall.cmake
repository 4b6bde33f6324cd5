# What `cmake --install` puts in place: library, headers, a CMake package and a pkg-config file. The command and the
# sample call install themselves where they are built.
include(CMakePackageConfigHelpers)

install(TARGETS murvane-audio EXPORT murvane-audio-targets)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/audio/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
foreach(name IN LISTS murvane_support_libraries)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/support/${name}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endforeach()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/murvane-audio)
install(
  EXPORT murvane-audio-targets
  NAMESPACE murvane::
  DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/murvane-audio-config.cmake.in
                              ${CMAKE_BINARY_DIR}/murvane-audio-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/murvane-audio-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/murvane-audio-config.cmake ${CMAKE_BINARY_DIR}/murvane-audio-config-version.cmake
        DESTINATION ${package_dir})

# The way back from the folder of the pkg-config file, which may be a level deeper (lib/x86_64-linux-gnu).
file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_prefix ${pc_prefix})
configure_file(${CMAKE_CURRENT_LIST_DIR}/murvane-audio.pc.in ${CMAKE_BINARY_DIR}/murvane-audio.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/murvane-audio.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
