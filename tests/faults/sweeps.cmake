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
add_dependencies(fault-sweep HotfixInstaller RecordedChild)
