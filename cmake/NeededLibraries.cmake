# cmake -D TOOL=otool -D PROGRAM=... -D ALLOWED=REGEX -P NeededLibraries.cmake: fails when a program needs
# a library whose path does not match, and names it.
execute_process(COMMAND ${TOOL} -L ${PROGRAM} OUTPUT_VARIABLE needed COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n\t[^ ]+" libraries "${needed}")
if(NOT libraries)
  message(FATAL_ERROR "${TOOL} tells no library that ${PROGRAM} needs")
endif()
list(TRANSFORM libraries STRIP)
list(FILTER libraries EXCLUDE REGEX "${ALLOWED}")
if(libraries)
  list(REMOVE_DUPLICATES libraries)
  list(JOIN libraries ", " libraries)
  message(FATAL_ERROR "${PROGRAM} needs what not everybody has: ${libraries}")
endif()
