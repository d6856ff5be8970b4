# Roll-outs with the real Ansible to a few hosts that are namespaces of this machine; ./test fleet takes
# twenty. Where there can be none the tests are skipped, with the reason as their output.
if(NOT TARGET hotfixctl OR NOT TARGET HotfixInstaller OR NOT HOTFIX_BUILD_SAMPLE)
  return()
endif()

hotfix_add_recorded_test(fleet Collection COMMAND ${CMAKE_CURRENT_LIST_DIR}/collection)
hotfix_add_recorded_test(fleet Rollout COMMAND ${CMAKE_CURRENT_LIST_DIR}/run ${PROJECT_BINARY_DIR}
                         --hosts 5)
set_tests_properties(fleet.Collection fleet.Rollout PROPERTIES LABELS fleet TIMEOUT 600
                                                               SKIP_RETURN_CODE 77)
