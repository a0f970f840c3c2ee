# about: the update check (plain C++ over BasicHTTP, no widgets) and the about window.
add_library(trelvane_update STATIC ${CMAKE_CURRENT_LIST_DIR}/update_check.cpp)
target_link_libraries(trelvane_update PUBLIC trelvane_http trelvane_http_qt trelvane_platform)
target_include_directories(trelvane_update PUBLIC ${CMAKE_SOURCE_DIR}/src)

target_sources(trelvane_shell PRIVATE ${CMAKE_CURRENT_LIST_DIR}/aboutbox.cpp)
target_link_libraries(trelvane_shell PUBLIC trelvane_update)
