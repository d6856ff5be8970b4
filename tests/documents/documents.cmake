# The commands of the documents that tell people what to type, run on the sample.
if(NOT TARGET hotfixctl OR NOT TARGET HotfixInstaller OR NOT HOTFIX_BUILD_SAMPLE)
  return()
endif()

file(GLOB documents CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/authors.md
     ${PROJECT_SOURCE_DIR}/docs/administrators.md ${PROJECT_SOURCE_DIR}/docs/fleet.md)
foreach(document IN LISTS documents)
  get_filename_component(name ${document} NAME_WE)
  hotfix_add_recorded_test(documents ${name} COMMAND ${CMAKE_CURRENT_LIST_DIR}/run ${document})
  set_tests_properties(
    documents.${name}
    PROPERTIES LABELS documents
               TIMEOUT 300
               SKIP_RETURN_CODE 77
               ENVIRONMENT "HOTFIX_BUILD=${PROJECT_BINARY_DIR}")
endforeach()
