# cmake --build <folder> --target docs: the API pages, in docs/html of the build folder. A public
# declaration without an explanation makes it fail.
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  set(HOTFIX_DOCS ${PROJECT_BINARY_DIR}/docs)
  set(HOTFIX_DOXYFILE ${PROJECT_BINARY_DIR}/Doxyfile)
  file(MAKE_DIRECTORY ${HOTFIX_DOCS})
  configure_file(docs/Doxyfile.in ${HOTFIX_DOXYFILE} @ONLY)
  add_custom_target(
    docs
    COMMAND ${DOXYGEN_EXECUTABLE} ${HOTFIX_DOXYFILE}
    COMMENT "API pages" VERBATIM)
endif()
