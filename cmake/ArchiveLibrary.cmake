# libarchive for hotfixctl, compiled with its headers and loaded when an archive is written
# (src/ctl/support/ArchiveLibrary.h), by the name under which programs that are linked to it find it.
find_path(HOTFIX_ARCHIVE_HEADERS archive.h REQUIRED)

if(NOT HOTFIX_ARCHIVE_LIBRARY)
  find_library(HOTFIX_ARCHIVE_FILE archive REQUIRED)
  execute_process(COMMAND ${CMAKE_READELF} -d ${HOTFIX_ARCHIVE_FILE} OUTPUT_VARIABLE found)
  if(NOT found MATCHES "SONAME[^[]*\\[([^]]+)\\]")
    message(FATAL_ERROR "${HOTFIX_ARCHIVE_FILE} is not a shared library: it could not be loaded")
  endif()
  set(HOTFIX_ARCHIVE_LIBRARY ${CMAKE_MATCH_1})
endif()

add_library(hotfix_archive INTERFACE)
target_include_directories(hotfix_archive SYSTEM INTERFACE ${HOTFIX_ARCHIVE_HEADERS})
target_compile_definitions(hotfix_archive
                           INTERFACE HOTFIX_ARCHIVE_LIBRARY="${HOTFIX_ARCHIVE_LIBRARY}")
