# libxml2 for our sources. They are compiled with its headers and load it when they come to need it
# (src/base/XmlLibrary.h), by the name under which programs that are linked to it find it.
find_package(LibXml2 REQUIRED)

if(NOT HOTFIX_XML_LIBRARY)
  execute_process(COMMAND ${CMAKE_READELF} -d ${LIBXML2_LIBRARIES} OUTPUT_VARIABLE found)
  if(NOT found MATCHES "SONAME[^[]*\\[([^]]+)\\]")
    message(FATAL_ERROR "${LIBXML2_LIBRARIES} is not a shared library: it could not be loaded")
  endif()
  set(HOTFIX_XML_LIBRARY ${CMAKE_MATCH_1})
endif()

add_library(hotfix_xml INTERFACE)
target_include_directories(hotfix_xml SYSTEM INTERFACE ${LIBXML2_INCLUDE_DIRS})
target_compile_definitions(hotfix_xml INTERFACE HOTFIX_XML_LIBRARY="${HOTFIX_XML_LIBRARY}")
