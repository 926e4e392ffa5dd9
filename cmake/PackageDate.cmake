# Read by cpack before it packs: the time that files in a package carry is that of the commit, so
# that the same commit gives the same bytes whenever it is packed. SOURCE_DATE_EPOCH takes
# precedence (https://reproducible-builds.org/specs/source-date-epoch); without a repository it is
# the date of the Debian changelog.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND git -C ${CPACK_TARN_SOURCE_DIR} log -1 --format=%ct
    OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE failed ERROR_QUIET)
  if(failed OR NOT date MATCHES "^[0-9]+$")
    file(STRINGS ${CPACK_TARN_SOURCE_DIR}/packaging/debian/changelog signature
      REGEX "^ -- " LIMIT_COUNT 1)
    string(REGEX REPLACE "^.*>  " "" date "${signature}")
    execute_process(COMMAND date --date=${date} +%s
      OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  endif()
  set(ENV{SOURCE_DATE_EPOCH} ${date})
endif()
