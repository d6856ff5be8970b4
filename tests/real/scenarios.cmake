# The program on a real platform, made of Debian's packages: one test for each scenario. Where there
# can be none the tests are skipped, with the reason as their output.
set(real_driver ${CMAKE_CURRENT_LIST_DIR}/run)
file(GLOB real_files CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/scenarios/*.sh)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${real_files})

function(hotfix_add_real_test name)
  add_test(NAME real.${name} COMMAND ${real_driver} ${ARGN})
  set_tests_properties(
    real.${name}
    PROPERTIES LABELS real
               TIMEOUT 300
               SKIP_RETURN_CODE 77
               ENVIRONMENT
               "HOTFIX_WORK=${PROJECT_BINARY_DIR}/real;HOTFIX_PROGRAM=$<TARGET_FILE:HotfixInstaller>")
endfunction()

if(TARGET HotfixInstaller)
  hotfix_add_real_test(Preparation --prepare)
  # It may have to download first.
  set_tests_properties(real.Preparation PROPERTIES FIXTURES_SETUP real_platform TIMEOUT 900)
  foreach(real_file IN LISTS real_files)
    file(STRINGS ${real_file} real_lines REGEX "^scenario_[A-Za-z0-9]+\\(\\) {$")
    foreach(real_line IN LISTS real_lines)
      string(REGEX REPLACE "^scenario_([A-Za-z0-9]+).*$" "\\1" real_scenario "${real_line}")
      hotfix_add_real_test(${real_scenario} ${real_scenario})
      set_tests_properties(real.${real_scenario} PROPERTIES FIXTURES_REQUIRED real_platform)
    endforeach()
  endforeach()
endif()
