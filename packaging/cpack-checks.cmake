# cpack-checks.cmake: read by cpack before it makes the package; refuses a package without its
# man pages, or whose changelog does not start with an entry for the project's version.
if(CPACK_GENERATOR STREQUAL "DEB")
  if(NOT CPACK_TRELVANE_MANUALS)
    message(FATAL_ERROR "The package needs its man pages: install help2man (scripts/setup) and configure again.")
  endif()
  file(STRINGS "${CPACK_TRELVANE_CHANGELOG}" top LIMIT_COUNT 1)
  if(NOT top MATCHES "^trelvane \\(${CPACK_PACKAGE_VERSION}\\) ")
    string(REGEX MATCH "^[^)]*\\)?" top "${top}")
    message(FATAL_ERROR "${CPACK_TRELVANE_CHANGELOG} starts with '${top}': "
                        "add an entry for version ${CPACK_PACKAGE_VERSION} on top.")
  endif()
endif()
