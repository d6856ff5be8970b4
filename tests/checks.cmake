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

# The released library is described as the development build is compiled.
hotfix_add_check(abi ${PROJECT_SOURCE_DIR}/scripts/check-abi $<TARGET_FILE:hotfix_shared>)
if(TARGET docs)
  hotfix_add_check(docs ${DOXYGEN_EXECUTABLE} ${HOTFIX_DOXYFILE})
endif()

# The linters. clang-tidy takes minutes for what has changed and has nothing else to run beside it.
hotfix_add_check(cppcheck ${PROJECT_SOURCE_DIR}/scripts/tidy ${PROJECT_BINARY_DIR} cppcheck)
hotfix_add_check(clang_tidy ${PROJECT_SOURCE_DIR}/scripts/tidy ${PROJECT_BINARY_DIR} clang-tidy)
set_tests_properties(check.clang_tidy PROPERTIES LABELS "check;slow" TIMEOUT 1800 PROCESSORS 2)

hotfix_add_check(promises ${PROJECT_SOURCE_DIR}/scripts/check-promises)

# Every test file has a test in one of the programs. This concerns all tests: without the sample's
# there is nothing to say.
if(TARGET sample-tests)
  list(TRANSFORM HOTFIX_TEST_PROGRAMS REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE programs)
  hotfix_add_check(test_files ${PROJECT_SOURCE_DIR}/scripts/check-test-files ${programs})
endif()

file(GLOB script_tests CONFIGURE_DEPENDS scripts/*_test.py)
foreach(script_test IN LISTS script_tests)
  get_filename_component(name ${script_test} NAME_WE)
  hotfix_add_check(${name} ${Python3_EXECUTABLE} -B ${script_test})
endforeach()

# The fuzzers come to an end with each input that is kept for them.
foreach(fuzzer IN LISTS HOTFIX_FUZZERS)
  add_test(NAME fuzz.${fuzzer} COMMAND ${PROJECT_SOURCE_DIR}/fuzz/replay $<TARGET_FILE:${fuzzer}>
                                       ${PROJECT_SOURCE_DIR}/fuzz/corpora/${fuzzer})
  set_tests_properties(fuzz.${fuzzer} PROPERTIES LABELS fuzz TIMEOUT 300 SKIP_RETURN_CODE 77)
endforeach()

# The benchmarks work; how fast they are is not judged here.
if(TARGET bench)
  add_test(NAME bench.measure COMMAND ${PROJECT_SOURCE_DIR}/bench/measure --small --rounds 1
                                      --program $<TARGET_FILE:bench>)
  add_test(NAME bench.unread COMMAND ${Python3_EXECUTABLE} -B
                                     ${CMAKE_CURRENT_SOURCE_DIR}/bench/unread_test.py
                                     $<TARGET_FILE:bench>)
  set_tests_properties(bench.measure bench.unread PROPERTIES LABELS bench TIMEOUT 300)
endif()

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
  if(step MATCHES "^(hardening|guide|demo|archive)$")
    set_tests_properties(package.${step} PROPERTIES RESOURCE_LOCK release)
  endif()
endfunction()

foreach(step install cmake cmake-shared cmake-static pkg-config-shared pkg-config-static)
  hotfix_add_package_step(${step} PROVES LIBRARY-1)
endforeach()
hotfix_add_package_step(headers PROVES LIBRARY-2)
hotfix_add_package_step(exports PROVES LIBRARY-3)
hotfix_add_package_step(hardening PROVES LIBRARY-4)
hotfix_add_package_step(guide PROVES LIBRARY-5)
hotfix_add_package_step(subdirectory PROVES LIBRARY-10)
hotfix_add_package_step(packager)
hotfix_add_package_step(archive)
hotfix_add_package_step(demo)
# The story needs mounts of its own.
set_tests_properties(package.demo PROPERTIES SKIP_RETURN_CODE 77)

# The packages of a release: made, judged, and used from the first installation to the last trace. They
# are made of the same release; a second build of it is left to ./test packages.
function(hotfix_add_packages_step step)
  hotfix_add_recorded_test(package packages-${step} ${ARGN} COMMAND
                           ${CMAKE_CURRENT_SOURCE_DIR}/package/packages ${step}
                           ${PROJECT_BINARY_DIR}/packages)
  set_tests_properties(package.packages-${step} PROPERTIES LABELS package TIMEOUT 900
                                                           SKIP_RETURN_CODE 77)
  if(step STREQUAL "made")
    set_tests_properties(package.packages-${step} PROPERTIES FIXTURES_REQUIRED installed
                                                             FIXTURES_SETUP packages)
  else()
    set_tests_properties(package.packages-${step} PROPERTIES FIXTURES_REQUIRED packages)
  endif()
  if(step MATCHES "^(made|packed|contents)$")
    set_tests_properties(package.packages-${step} PROPERTIES RESOURCE_LOCK release)
  endif()
endfunction()

if(HOTFIX_PACKAGE_COMPONENTS AND HOTFIX_BUILD_SAMPLE AND HOTFIX_BUILD_CTL)
  hotfix_add_packages_step(made PROVES SHIP-1)
  hotfix_add_packages_step(lintian PROVES SHIP-2)
  hotfix_add_packages_step(life PROVES SHIP-3)
  hotfix_add_packages_step(rpm PROVES SHIP-4)
  hotfix_add_packages_step(packed PROVES SHIP-5)
  hotfix_add_packages_step(versions PROVES SHIP-6)
  hotfix_add_packages_step(sbom PROVES SHIP-7)
  hotfix_add_packages_step(contents PROVES SHIP-8)
  hotfix_add_packages_step(symbols PROVES SHIP-9)
  set_tests_properties(package.packages-packed PROPERTIES PROCESSORS 2)
endif()

# What all these tests have shown: a passed test for each promise, the sample's among them. It comes
# last; ctest learns what to wait for when it learns of the tests.
if(TARGET sample-tests)
  get_property(tests GLOBAL PROPERTY HOTFIX_RECORDED_TESTS)
  foreach(program IN LISTS HOTFIX_TEST_PROGRAMS)
    list(APPEND tests "\${${program}_TESTS}")
  endforeach()
  list(JOIN programs "\" \"" programs)
  file(
    GENERATE
    OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/proofs.cmake
    CONTENT
      "add_test(proofs \"${PROJECT_SOURCE_DIR}/scripts/check-promises\"
  --results \"${HOTFIX_RESULTS}\" --table \"${PROJECT_BINARY_DIR}/proofs.md\" \"${programs}\")
set_tests_properties(proofs PROPERTIES
  LABELS proofs TIMEOUT 300 WORKING_DIRECTORY \"${PROJECT_SOURCE_DIR}\" DEPENDS \"${tests}\")
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${CMAKE_CURRENT_BINARY_DIR}/proofs.cmake)
endif()
