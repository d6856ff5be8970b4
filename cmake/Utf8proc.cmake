# utf8proc for our sources: the machine's own, which pkg-config finds, or compiled into the library
# from its sources, where a program must not need it on the machine that it runs on, or is built for
# several architectures at once.
set(HOTFIX_UTF8PROC_SOURCE "" CACHE PATH "A folder with utf8proc.c, to compile it in (or nothing)")

add_library(hotfix_utf8proc INTERFACE)
set(HOTFIX_UTF8PROC_SOURCES "")
set(HOTFIX_UTF8PROC_LIBRARY "")
if(HOTFIX_UTF8PROC_SOURCE)
  enable_language(C)
  set(HOTFIX_UTF8PROC_SOURCES ${HOTFIX_UTF8PROC_SOURCE}/utf8proc.c)
  target_include_directories(hotfix_utf8proc SYSTEM INTERFACE ${HOTFIX_UTF8PROC_SOURCE})
  target_compile_definitions(hotfix_utf8proc INTERFACE UTF8PROC_STATIC)
else()
  pkg_check_modules(UTF8PROC REQUIRED IMPORTED_TARGET libutf8proc)
  set(HOTFIX_UTF8PROC_LIBRARY PkgConfig::UTF8PROC)
  target_link_libraries(hotfix_utf8proc INTERFACE ${HOTFIX_UTF8PROC_LIBRARY})
endif()
