# How many system calls whole runs on the sample make, against what was recorded. It follows programs
# as the sweeps of faults do.
if(NOT TARGET fault-sweep OR NOT HOTFIX_BUILD_SAMPLE OR NOT TARGET hotfixctl)
  return()
endif()

file(GLOB call_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*.cpp)
foreach(source Apart Calls ElfMain Tracee)
  list(APPEND call_sources ${CMAKE_CURRENT_SOURCE_DIR}/faults/${source}.cpp)
endforeach()
add_executable(call-count ${call_sources})
target_link_libraries(call-count PRIVATE hotfix_test_support)
add_dependencies(call-count HotfixInstaller RecordedChild hotfixctl sample)

# Sanitizers and counters have calls of their own.
if(NOT HOTFIX_SANITIZE AND NOT HOTFIX_COVERAGE)
  hotfix_add_recorded_test(calls whole_runs COMMAND ${CMAKE_CURRENT_LIST_DIR}/count --counter
                           $<TARGET_FILE:call-count>)
  set_tests_properties(calls.whole_runs PROPERTIES LABELS calls TIMEOUT 120 SKIP_RETURN_CODE 77)
endif()
