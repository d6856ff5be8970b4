# Tests of the tree itself: its layers, its format, its scripts.
function(hotfix_add_check name)
  add_test(NAME check.${name} COMMAND ${ARGN} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(check.${name} PROPERTIES LABELS check TIMEOUT 300)
endfunction()

hotfix_add_check(layers ${PROJECT_SOURCE_DIR}/scripts/check-layers)
hotfix_add_check(format ${PROJECT_SOURCE_DIR}/scripts/check-format)
set_tests_properties(check.format PROPERTIES SKIP_RETURN_CODE 77)

file(GLOB script_tests CONFIGURE_DEPENDS scripts/*_test.py)
foreach(script_test IN LISTS script_tests)
  get_filename_component(name ${script_test} NAME_WE)
  hotfix_add_check(${name} ${Python3_EXECUTABLE} -B ${script_test})
endforeach()
