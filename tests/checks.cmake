# Tests of the tree itself: its layers, its format, its scripts. One whose tool is missing counts as
# skipped.
function(hotfix_add_check name)
  add_test(NAME check.${name} COMMAND ${ARGN} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(check.${name} PROPERTIES LABELS check TIMEOUT 300 SKIP_RETURN_CODE 77)
endfunction()

hotfix_add_check(layers ${PROJECT_SOURCE_DIR}/scripts/check-layers)
hotfix_add_check(format ${PROJECT_SOURCE_DIR}/scripts/check-format)
hotfix_add_check(shell ${PROJECT_SOURCE_DIR}/scripts/check-shell)
hotfix_add_check(commits ${PROJECT_SOURCE_DIR}/scripts/check-commits)

# Every test file has a test in one of the programs; every behaviour that the documents promise has
# one that ran. The second comes last: ctest learns what to wait for when it learns of the tests.
# Both concern all tests: without the sample's there is nothing to say.
if(HOTFIX_BUILD_SAMPLE)
  list(TRANSFORM HOTFIX_TEST_PROGRAMS REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE programs)
  hotfix_add_check(test_files ${PROJECT_SOURCE_DIR}/scripts/check-test-files ${programs})

  list(TRANSFORM HOTFIX_TEST_PROGRAMS REPLACE "(.+)" "\${\\1_TESTS}" OUTPUT_VARIABLE all_tests)
  list(JOIN programs "\" \"" programs)
  file(
    GENERATE
    OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/behaviours.cmake
    CONTENT
      "add_test(check.behaviours \"${PROJECT_SOURCE_DIR}/scripts/check-behaviours\"
  --results \"${HOTFIX_RESULTS}\" --build \"${PROJECT_BINARY_DIR}\" \"${programs}\")
set_tests_properties(check.behaviours PROPERTIES
  LABELS check TIMEOUT 600 WORKING_DIRECTORY \"${PROJECT_SOURCE_DIR}\" DEPENDS \"${all_tests}\")
")
  if(EXISTS ${PROJECT_SOURCE_DIR}/docs/behaviours.md)
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES
                                           ${CMAKE_CURRENT_BINARY_DIR}/behaviours.cmake)
  endif()
endif()

file(GLOB script_tests CONFIGURE_DEPENDS scripts/*_test.py)
foreach(script_test IN LISTS script_tests)
  get_filename_component(name ${script_test} NAME_WE)
  hotfix_add_check(${name} ${Python3_EXECUTABLE} -B ${script_test})
endforeach()

# The release as others get it: built, installed, and used from outside. The first step builds; those
# that look at its build folder wait for the one that changes it.
function(hotfix_add_package_step step)
  hotfix_add_recorded_test(package ${step} ${ARGN} COMMAND
                           ${CMAKE_CURRENT_SOURCE_DIR}/package/run ${step}
                           ${PROJECT_BINARY_DIR}/package)
  set_tests_properties(package.${step} PROPERTIES LABELS package TIMEOUT 900)
  if(step STREQUAL "install")
    set_tests_properties(package.${step} PROPERTIES FIXTURES_SETUP installed PROCESSORS 2)
  else()
    set_tests_properties(package.${step} PROPERTIES FIXTURES_REQUIRED installed)
  endif()
  if(step MATCHES "^(hardening|guide|demo)$")
    set_tests_properties(package.${step} PROPERTIES RESOURCE_LOCK release)
  endif()
endfunction()

foreach(step install headers hardening exports cmake cmake-shared cmake-static pkg-config-shared
             pkg-config-static guide packager demo)
  hotfix_add_package_step(${step})
endforeach()
# The story needs mounts of its own.
set_tests_properties(package.demo PROPERTIES SKIP_RETURN_CODE 77)
