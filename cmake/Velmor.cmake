# Helpers that keep every folder's CMakeLists.txt to a few lines.
find_package(PkgConfig REQUIRED)

# velmor_library(<name> [DEPS <targets>...] [PKG <pkg-config modules>...])
# A static library of every .cpp in the calling folder (recursively).
function(velmor_library name)
  cmake_parse_arguments(ARG "" "" "DEPS;PKG;EXCLUDE" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  foreach(ex IN LISTS ARG_EXCLUDE)
    list(FILTER sources EXCLUDE REGEX "${ex}")
  endforeach()
  if(sources)
    add_library(${name} STATIC ${sources})
    set(scope PUBLIC)
  else()
    add_library(${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_include_directories(${name} ${scope} ${PROJECT_SOURCE_DIR}/src)
  if(ARG_DEPS)
    target_link_libraries(${name} ${scope} ${ARG_DEPS})
  endif()
  foreach(pkg IN LISTS ARG_PKG)
    string(MAKE_C_IDENTIFIER ${pkg} id)
    pkg_check_modules(PKG_${id} REQUIRED IMPORTED_TARGET ${pkg})
    target_link_libraries(${name} ${scope} PkgConfig::PKG_${id})
  endforeach()
endfunction()

# velmor_test(<name> DEPS <targets>... [X_DISPLAY]): one test executable of
# every .cpp in the calling folder, each GoogleTest case registered with
# CTest. X_DISPLAY tests share the test run's X server, whose screen layout
# some of them change: they take turns.
function(velmor_test name)
  cmake_parse_arguments(ARG "X_DISPLAY" "" "DEPS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  add_executable(${name} ${sources})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gmock velmor_test_main)
  # Tests that read shipped or sample files find them from the sources.
  target_compile_definitions(${name} PRIVATE VELMOR_SOURCE_ROOT="${PROJECT_SOURCE_DIR}")
  set(props ENVIRONMENT "VELMOR_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
  if(ARG_X_DISPLAY)
    list(APPEND props RESOURCE_LOCK x_display)
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES ${props})
endfunction()

# Adds every listed subfolder that has a CMakeLists.txt, in the given order.
macro(velmor_subdirs)
  foreach(dir ${ARGN})
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/CMakeLists.txt)
      add_subdirectory(${dir})
    endif()
  endforeach()
endmacro()
