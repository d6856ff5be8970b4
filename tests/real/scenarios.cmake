# The program on a real platform, made of Debian's packages: one test for each scenario. Where there
# can be none the tests are skipped, with the reason as their output.
set(real_driver ${CMAKE_CURRENT_LIST_DIR}/run)
file(GLOB real_files CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/scenarios/*.sh)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${real_files})

function(hotfix_add_real_test name)
  hotfix_add_recorded_test(real ${name} ${ARGN})
  set_tests_properties(
    real.${name}
    PROPERTIES LABELS real
               TIMEOUT 300
               SKIP_RETURN_CODE 77
               ENVIRONMENT
               "HOTFIX_WORK=${PROJECT_BINARY_DIR}/real;HOTFIX_PROGRAM=$<TARGET_FILE:HotfixInstaller>")
endfunction()

if(TARGET HotfixInstaller AND TARGET hotfixctl)
  hotfix_add_real_test(Preparation COMMAND ${real_driver} --prepare)
  # It may have to download first.
  set_tests_properties(real.Preparation PROPERTIES FIXTURES_SETUP real_platform TIMEOUT 900)
  foreach(real_file IN LISTS real_files)
    file(STRINGS ${real_file} real_lines REGEX "^(# proves:.*|scenario_[A-Za-z0-9]+\\(\\) {)$")
    set(real_proves)
    foreach(real_line IN LISTS real_lines)
      if(real_line MATCHES "^# proves:(.*)$")
        separate_arguments(real_proves UNIX_COMMAND "${CMAKE_MATCH_1}")
      else()
        string(REGEX REPLACE "^scenario_([A-Za-z0-9]+).*$" "\\1" real_scenario "${real_line}")
        hotfix_add_real_test(${real_scenario} PROVES ${real_proves} COMMAND ${real_driver}
                             ${real_scenario})
        set_tests_properties(real.${real_scenario} PROPERTIES FIXTURES_REQUIRED real_platform)
        set(real_proves)
      endif()
    endforeach()
  endforeach()
endif()
