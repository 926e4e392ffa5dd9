# What `cpack` in a build tree makes of what is installed: a .deb, or a .zip for Windows.
set(CPACK_PACKAGE_NAME tarnpst)
set(CPACK_PACKAGE_VENDOR "the TarnPst developers")
set(CPACK_PACKAGE_CONTACT
  "TarnPst developers <tarnpst@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "mail-file filter for PST, MSG and EML files")
set(CPACK_PACKAGE_DESCRIPTION
"Reads one message of a PST store, an MSG file or an internet mail file and
makes one document of it, HTML, RTF or plain text, for a host that lays it
out. Lists and extracts attachments.
.
This package holds the filter and its plain kernel as libraries, the headers
and files to build hosts with, and the command line tarnmail.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR})
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/PackageDate.cmake)
set(CPACK_TARN_SOURCE_DIR ${PROJECT_SOURCE_DIR})

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME TarnPst-${PROJECT_VERSION}-windows-x86_64)
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
  set(CPACK_DEBIAN_PACKAGE_SECTION mail)
  set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "tarnpst-archive, tarnpst-pages")
  set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  # What only a package has is left out by `cmake --install`.
  set(CPACK_INSTALL_CMAKE_PROJECTS
    ${PROJECT_BINARY_DIR} TarnPst ALL / ${PROJECT_BINARY_DIR} TarnPst debian /)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/debian/lintian-overrides
    DESTINATION share/lintian/overrides RENAME tarnpst COMPONENT debian EXCLUDE_FROM_ALL)
endif()
include(CPack)

# The helpers that lay out pages are a package of their own, which `cpack --config
# CPackPagesConfig.cmake` in the build tree makes: what they need is a word processor and fonts.
if(NOT WIN32 AND TARGET tarnmail-pages AND TARGET tarnmail-office)
  set(pages_docdir share/doc/tarnpst-pages)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright
    DESTINATION ${pages_docdir} COMPONENT pages EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/compressed/changelog.Debian.gz
    DESTINATION ${pages_docdir} COMPONENT pages EXCLUDE_FROM_ALL)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/CPackPagesConfig.cmake.in
    ${PROJECT_BINARY_DIR}/CPackPagesConfig.cmake @ONLY)
endif()

# The archive commands alike, by CPackArchiveConfig.cmake: they need libraries that hosts do not.
if(TARGET tarnmail-archive)
  set(archive_docdir share/doc/tarnpst-archive)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright
    DESTINATION ${archive_docdir} COMPONENT archive EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/compressed/changelog.Debian.gz
    DESTINATION ${archive_docdir} COMPONENT archive EXCLUDE_FROM_ALL)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/CPackArchiveConfig.cmake.in
    ${PROJECT_BINARY_DIR}/CPackArchiveConfig.cmake @ONLY)
endif()
