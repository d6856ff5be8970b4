# The presets turn warnings into errors; a packager's own configuration does not.
option(HOTFIX_WERROR "Treat warnings as errors" OFF)

add_library(hotfix_warnings INTERFACE)
target_compile_options(hotfix_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow)
if(HOTFIX_WERROR)
  target_compile_options(hotfix_warnings INTERFACE -Werror)
endif()
