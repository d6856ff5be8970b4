# Roll-outs with the real Ansible to a few hosts that are namespaces of this machine; ./test fleet takes
# twenty. What Macs are handed is run on a stand-in of one. Where there can be none of these the tests are
# skipped, with the reason as their output.
if(NOT TARGET hotfixctl OR NOT TARGET HotfixInstaller OR NOT HOTFIX_BUILD_SAMPLE)
  return()
endif()

hotfix_add_recorded_test(fleet Collection COMMAND ${CMAKE_CURRENT_LIST_DIR}/collection)
hotfix_add_recorded_test(fleet Rollout COMMAND ${CMAKE_CURRENT_LIST_DIR}/run ${PROJECT_BINARY_DIR}
                         --hosts 5)
hotfix_add_recorded_test(
  fleet Macs COMMAND ${CMAKE_CURRENT_LIST_DIR}/macs ${PROJECT_BINARY_DIR}
  PROVES MAC-1 MAC-2 MAC-3 MAC-4 MAC-5 MAC-6 MAC-7)
set_tests_properties(fleet.Collection fleet.Rollout fleet.Macs
                     PROPERTIES LABELS fleet TIMEOUT 600 SKIP_RETURN_CODE 77)
