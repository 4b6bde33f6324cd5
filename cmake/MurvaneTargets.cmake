# What every target of the project has in common: the language level, the warnings and the sanitizers.
set(CMAKE_CXX_EXTENSIONS OFF)
add_library(murvane-build-flags INTERFACE)
target_compile_features(murvane-build-flags INTERFACE cxx_std_20)
target_compile_options(
  murvane-build-flags
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            $<$<CXX_COMPILER_ID:GNU>:-Wsuggest-override>
            # g++ 12 takes joining a literal and a string for a copy onto itself (GCC bug 105651).
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
            # Sums and products are rounded one by one, so that a result never depends on whether the machine
            # that built it could fuse them.
            -ffp-contract=off)
if(MURVANE_WARNINGS_AS_ERRORS)
  target_compile_options(murvane-build-flags INTERFACE -Werror)
endif()
if(MURVANE_SANITIZE)
  string(REPLACE ";" "," murvane_sanitizers "${MURVANE_SANITIZE}")
  target_compile_options(murvane-build-flags INTERFACE -fsanitize=${murvane_sanitizers} -fno-omit-frame-pointer
                                                       -fno-sanitize-recover=all)
  target_link_options(murvane-build-flags INTERFACE -fsanitize=${murvane_sanitizers})
endif()

# murvane_support_library(NAME [DEPENDS TARGET...] [PRIVATE_DEPENDS TARGET...])
#
# One of the small libraries below support/: its objects, position-independent, are folded into libmurvane-audio.so; the
# same objects as a static library serve its own tests (if MURVANE_BUILD_TESTS), so that it keeps standing by itself.
function(murvane_support_library name)
  cmake_parse_arguments(arg "" "" "DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  set(target murvane-${name})
  file(GLOB sources CONFIGURE_DEPENDS src/*.cpp)
  add_library(${target}-objects OBJECT ${sources})
  add_library(${target} STATIC $<TARGET_OBJECTS:${target}-objects>)
  add_library(murvane::${name} ALIAS ${target})
  foreach(library IN ITEMS ${target}-objects ${target})
    target_include_directories(${library} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include)
    target_link_libraries(
      ${library}
      PUBLIC ${arg_DEPENDS}
      PRIVATE ${arg_PRIVATE_DEPENDS} murvane-build-flags)
  endforeach()
  set_target_properties(${target}-objects PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                                                     VISIBILITY_INLINES_HIDDEN ON)
  if(MURVANE_BUILD_TESTS)
    file(GLOB tests CONFIGURE_DEPENDS tests/*.cpp)
    if(tests)
      murvane_test(${name}_tests LABEL support SOURCES ${tests} LIBRARIES murvane::${name})
    endif()
  endif()
endfunction()

# murvane_test(NAME LABEL LABEL SOURCES FILE... LIBRARIES TARGET...)
#
# A GoogleTest program whose cases are known to CTest one by one.
function(murvane_test name)
  cmake_parse_arguments(arg "" "LABEL" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} murvane-testkit GTest::gmock GTest::gtest_main
                                        murvane-build-flags)
  gtest_discover_tests(
    ${name}
    TEST_PREFIX ${arg_LABEL}/
    PROPERTIES LABELS ${arg_LABEL} TIMEOUT 300
    DISCOVERY_TIMEOUT 120)
endfunction()
