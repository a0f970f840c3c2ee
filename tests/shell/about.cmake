# tests of the update check, of trelvane-cli check-update and of the about window, on 127.0.0.1 only.
trelvane_test(update_check_tests
  SOURCES update_check_test.cpp check_update_cli_test.cpp
  LIBS trelvane_update Qt6::Core Qt6::Network)
target_include_directories(update_check_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_definitions(update_check_tests PRIVATE
  TRELVANE_PROJECT_VERSION="${PROJECT_VERSION}"
  TRELVANE_CLI="$<TARGET_FILE:trelvane-cli>")
add_dependencies(update_check_tests trelvane-cli)

# fontconfig's lifelong configuration is no leak of ours (sanitizer builds)
trelvane_test(aboutbox_tests
  SOURCES aboutbox_test.cpp ${CMAKE_SOURCE_DIR}/tests/plots/lsan_suppressions.cpp
  LIBS trelvane_shell Qt6::Test)
target_include_directories(aboutbox_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
