# What cpack runs when it has installed the components and before it makes their packages.
if(NOT CPACK_GENERATOR MATCHES "^(DEB|RPM)$")
  return()
endif()

# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} name)
  set(control ${CPACK_TOPLEVEL_DIRECTORY}/control/${component})
  execute_process(
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/finish ${CPACK_GENERATOR} ${component} ${CPACK_PACKAGE_VERSION}
            ${CPACK_PACKAGE_CONTACT} ${CPACK_TEMPORARY_DIRECTORY}/${component} ${control}
    OUTPUT_VARIABLE depends COMMAND_ERROR_IS_FATAL ANY)
  if(CPACK_GENERATOR STREQUAL "DEB")
    list(APPEND depends ${CPACK_DEBIAN_${name}_PACKAGE_DEPENDS})
    list(JOIN depends ", " CPACK_DEBIAN_${name}_PACKAGE_DEPENDS)
    file(GLOB CPACK_DEBIAN_${name}_PACKAGE_CONTROL_EXTRA ${control}/*)
  else()
    list(APPEND depends ${CPACK_RPM_${name}_PACKAGE_REQUIRES})
    list(JOIN depends ", " CPACK_RPM_${name}_PACKAGE_REQUIRES)
    set(CPACK_RPM_CHANGELOG_FILE ${control}/changelog)
  endif()
endforeach()
