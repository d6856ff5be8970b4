# Reports in a headless browser; skipped where there is none, with the reason as the test's output.
if(NOT TARGET hotfixctl)
  return()
endif()

function(hotfix_add_report_test name)
  hotfix_add_recorded_test(report ${name} ${ARGN} COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/run
                           ${PROJECT_BINARY_DIR})
  set_tests_properties(report.${name} PROPERTIES LABELS report TIMEOUT 300 SKIP_RETURN_CODE 77)
endfunction()

hotfix_add_report_test(Page PROVES REPORT-4 REPORT-7)
