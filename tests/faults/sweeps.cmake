# The program that runs the installer with one fault after the other. It follows programs by their
# registers, which is the machine's business.
if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  message(STATUS "Faults are not swept on ${CMAKE_SYSTEM_PROCESSOR}")
  return()
endif()

file(GLOB fault_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*.cpp)
add_executable(fault-sweep ${fault_sources})
target_link_libraries(fault-sweep PRIVATE hotfix_test_support)
add_library(failing-allocation MODULE ${CMAKE_CURRENT_LIST_DIR}/preload/FailingAllocation.cpp)
target_link_libraries(failing-allocation PRIVATE hotfix_warnings)
target_compile_definitions(fault-sweep PRIVATE
                           HOTFIX_FAILING_ALLOCATION="$<TARGET_FILE:failing-allocation>")
add_dependencies(fault-sweep failing-allocation)
# It looks at all files after each of many thousand runs.
target_compile_options(fault-sweep PRIVATE -O2)
add_dependencies(fault-sweep HotfixInstaller RecordedChild)

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

# What breaks these rules is known: temporary names of killed runs stay, and some failures are told
# by nothing but their effect.
set(known reason,left-over,again-left-over)
set(successes install,upgrade,again,failing,new-workspace,no-manifest,staged)
set(others characters,running,higher,not-installed,broken-merge)
foreach(part successes others)
  hotfix_add_sweep(full_disk_${part} --scenario ${${part}} --kind full --without ${known} --sample 25)
  hotfix_add_sweep(kills_${part} --scenario ${${part}} --kind kill --without ${known} --sample 60)
endforeach()

# A merge's names and what a launcher installed are not flushed in time yet.
hotfix_add_sweep(order --kind order --without ${known},flush-after,flush-child)

hotfix_add_sweep(power --scenario install,upgrade,broken-merge --kind power --without ${known}
                 --sample 40)

# Links at these names lead nobody anywhere; those at deploy, .config, the data folder, the rcp home
# and at the files that are read, changed and saved still do.
set(unled eclipse plugins base-plugin extras extras-tools extras-file shared shared-file data-file
    uninstall-xml backup keystore result trace record marker configuration staging
    temporary)
set(files extras-file shared-file data-file uninstall-xml backup keystore result trace
    record marker configuration temporary)
list(TRANSFORM unled PREPEND "link-")
list(TRANSFORM files PREPEND "hard-link-")
list(JOIN unled "," links)
list(JOIN files "," hard_links)
hotfix_add_sweep(links --scenario install,upgrade,staged --kind ${links} --sample 8)
hotfix_add_sweep(hard_links --scenario install,upgrade --kind ${hard_links} --sample 8)
