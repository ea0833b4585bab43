# vesk_add_gtest(NAME SOURCES src... LIBS lib... [THREADED] [BATCH n])
# Builds one GoogleTest binary and registers its tests with CTest. With VESK_UNITY_BUILD its
# sources compile in batches of n (8 unless given).
# THREADED tests also run in the ThreadSanitizer job (label "threaded").
add_custom_target(threaded_tests)

function(vesk_add_gtest name)
  cmake_parse_arguments(ARG "THREADED" "BATCH" "SOURCES;LIBS" ${ARGN})
  if(NOT VESK_BUILD_ALL AND NOT ARG_THREADED)
    return()
  endif()
  add_executable(${name} ${ARG_SOURCES})
  vesk_unity(${name} BATCH ${ARG_BATCH})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main Threads::Threads)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  # One label per test: "threaded" ones also run in the ThreadSanitizer job.
  set(labels unit)
  if(ARG_THREADED)
    set(labels threaded)
    add_dependencies(threaded_tests ${name})
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS "${labels}" TIMEOUT 300)
endfunction()
include(GoogleTest)
