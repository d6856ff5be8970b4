# The program that runs the installer with one fault after the other. It follows programs by their
# registers, which is the machine's business.
if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  message(STATUS "Faults are not swept on ${CMAKE_SYSTEM_PROCESSOR}")
  return()
endif()

file(GLOB fault_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*.cpp)
add_executable(fault-sweep ${fault_sources})
target_link_libraries(fault-sweep PRIVATE hotfix_test_support)
# It looks at all files after each of many thousand runs.
target_compile_options(fault-sweep PRIVATE -O2)
add_dependencies(fault-sweep HotfixInstaller RecordedChild ${HOTFIX_PRELOAD_LIBRARIES})

# Sanitizers and counters have calls and files of their own.
if(HOTFIX_SANITIZE OR HOTFIX_COVERAGE)
  return()
endif()

# hotfix_add_sweep(name argument...): a part of all sweeps, always the same one. The file lists them
# for the script that looks whether they see anything.
set(HOTFIX_FAULT_SAMPLES ${PROJECT_BINARY_DIR}/fault-samples)
file(WRITE ${HOTFIX_FAULT_SAMPLES} "")
function(hotfix_add_sweep name)
  list(JOIN ARGN " " arguments)
  file(APPEND ${HOTFIX_FAULT_SAMPLES} "${name} ${arguments}\n")
  hotfix_add_recorded_test(faults ${name} COMMAND $<TARGET_FILE:fault-sweep> ${ARGN})
  set_tests_properties(faults.${name} PROPERTIES LABELS faults TIMEOUT 600 SKIP_RETURN_CODE 77)
endfunction()

# The sweeps see: not what a sweep says of this program, but that it says it.
add_executable(careless-installer ${CMAKE_CURRENT_LIST_DIR}/standin/main.cpp)
target_link_libraries(careless-installer PRIVATE hotfix_warnings)
add_test(NAME faults.sees_false_success
         COMMAND fault-sweep --scenario install --kind none
                 --program $<TARGET_FILE:careless-installer>)
set_tests_properties(
  faults.sees_false_success
  PROPERTIES LABELS faults TIMEOUT 60 SKIP_RETURN_CODE 77
             PASS_REGULAR_EXPRESSION "VIOLATION install undisturbed .false-success.")

add_test(NAME faults.tells_what_is_known
         COMMAND ${CMAKE_CURRENT_LIST_DIR}/resumed $<TARGET_FILE:fault-sweep>
                 $<TARGET_FILE:careless-installer>)
set_tests_properties(faults.tells_what_is_known PROPERTIES LABELS faults TIMEOUT 60
                                                           SKIP_RETURN_CODE 77)

set(successes install,upgrade,again,failing,new-workspace,no-manifest)
set(others characters,running,higher,not-installed,broken-merge,staged)

hotfix_add_sweep(order --kind order)
hotfix_add_sweep(links --scenario install,upgrade,staged --kind link --sample 5)
hotfix_add_sweep(hard_links --scenario install,upgrade --kind hard-link --sample 5)
hotfix_add_sweep(attacks --kind attack --sample 3)
hotfix_add_sweep(reasons --scenario install,upgrade --kind fail-ENOSPC,fail-EROFS --sample 60)
hotfix_add_sweep(allocations --scenario install,upgrade,running --kind alloc --sample 60)
# Where the trace is opened every one counts.
hotfix_add_sweep(first_allocations --scenario install --kind alloc --range 1-60)
hotfix_add_sweep(power --scenario install,upgrade,broken-merge --kind power --sample 40)
hotfix_add_sweep(short_writes --kind short --sample 12)
foreach(part successes others)
  hotfix_add_sweep(failures_${part} --scenario ${${part}} --kind fail --sample 12)
  hotfix_add_sweep(full_disk_${part} --scenario ${${part}} --kind full --sample 15)
  hotfix_add_sweep(kills_${part} --scenario ${${part}} --kind kill --sample 50)
endforeach()
