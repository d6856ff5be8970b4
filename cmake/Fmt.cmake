# {fmt} for our sources, without a library that others would have to link. Its header-only form
# compiles the whole library in every source, which takes three times as long as the sources
# themselves; so it is compiled once, in a namespace of its own that cannot meet another program's
# {fmt}. How to do that is known for version 9; others are used header-only.
find_package(fmt REQUIRED)

add_library(hotfix_fmt INTERFACE)
if(fmt_VERSION VERSION_GREATER_EQUAL 9 AND fmt_VERSION VERSION_LESS 10)
  set(HOTFIX_FMT_SOURCES ${CMAKE_CURRENT_LIST_DIR}/fmt9.cpp)
  target_include_directories(
    hotfix_fmt SYSTEM INTERFACE $<TARGET_PROPERTY:fmt::fmt,INTERFACE_INCLUDE_DIRECTORIES>)
  target_compile_definitions(
    hotfix_fmt INTERFACE "FMT_BEGIN_NAMESPACE=namespace fmt { inline namespace hotfix {"
                         "FMT_END_NAMESPACE=}}")
else()
  set(HOTFIX_FMT_SOURCES)
  target_link_libraries(hotfix_fmt INTERFACE fmt::fmt-header-only)
endif()
