# What `cmake --install` puts where: the two libraries, tarnmail, the public headers, the CMake
# package, the pkg-config file, the manual page. Included last, when all targets are there.
#
# The libraries carry no version in their names: hosts load them, and the kernel of a host may take
# the place of libTarnbase.so, by these very names. They lie in the public library directory, so
# that a program linked with -lTarnPst runs without a search path of its own.
if(NOT WIN32 AND CMAKE_LIBRARY_ARCHITECTURE AND NOT DEFINED CMAKE_INSTALL_LIBDIR)
  # Below every prefix, not below /usr alone: where the loader of Debian looks.
  set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH "Object code libraries")
endif()
if(NOT CMAKE_INSTALL_DOCDIR)
  # What unpacks side by side on Windows has no share/.
  if(WIN32)
    set(docdir doc)
  else()
    set(docdir share/doc/tarnpst)
  endif()
  set(CMAKE_INSTALL_DOCDIR ${docdir} CACHE PATH "Documentation" FORCE)
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(cmakedir ${CMAKE_INSTALL_LIBDIR}/cmake/TarnPst)

# As built, the program looks for libraries in its own folder; TARGET_built_rpath then has room for the
# path that it gets when it is installed. CMake would make that room of empty folders, and an empty one is
# the folder that a program happens to be started in. Here it comes from "/.".
function(look_in_own_folder target installed_rpath)
  set(rpath "$ORIGIN")
  string(LENGTH "${installed_rpath}" needed)
  string(LENGTH "${rpath}" room)
  while(room LESS needed)
    string(APPEND rpath "/.")
    string(LENGTH "${rpath}" room)
  endwhile()
  set_target_properties(${target} PROPERTIES INSTALL_RPATH ${rpath} BUILD_WITH_INSTALL_RPATH ON)
  set(${target}_built_rpath ${rpath} PARENT_SCOPE)
endfunction()

# Libraries and program. Whatever the prefix becomes, each finds the others from where it lies.
set(helperdir lib/tarnpst)  # programs that only tarnmail starts
set(include_installed $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_include_directories(Tarnbase INTERFACE ${include_installed})
target_include_directories(TarnPst INTERFACE ${include_installed})
target_link_libraries(TarnPst INTERFACE $<INSTALL_INTERFACE:TarnPst::Tarnbase>)
if(NOT WIN32)
  if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} OR IS_ABSOLUTE ${CMAKE_INSTALL_BINDIR})
    # One of the two stays where it is, whatever the prefix becomes.
    set(libdir_from_program ${CMAKE_INSTALL_FULL_LIBDIR})
    set(helperdir_from_program ${CMAKE_INSTALL_PREFIX}/${helperdir})
    set(program_rpath ${CMAKE_INSTALL_FULL_LIBDIR})
  else()
    file(RELATIVE_PATH libdir_from_program
      ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    file(RELATIVE_PATH helperdir_from_program
      ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_PREFIX}/${helperdir})
    set(program_rpath "$ORIGIN/${libdir_from_program}")
  endif()
  # The prefix may be another one when it is installed.
  set(installed_bindir "\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}")
  if(IS_ABSOLUTE ${CMAKE_INSTALL_BINDIR})
    set(installed_bindir ${CMAKE_INSTALL_BINDIR})
  endif()
  target_compile_definitions(tarnmail_parts PRIVATE TARN_LIBRARIES_FROM_PROGRAM="${libdir_from_program}")
  target_compile_definitions(tarn_console PRIVATE TARN_HELPERS_FROM_PROGRAM="${helperdir_from_program}")
  set_target_properties(Tarnbase PROPERTIES SKIP_BUILD_RPATH ON)
  set_target_properties(TarnPst PROPERTIES INSTALL_RPATH "$ORIGIN" BUILD_WITH_INSTALL_RPATH ON)
  look_in_own_folder(tarnmail "${program_rpath}")
endif()
install(TARGETS TarnPst Tarnbase EXPORT TarnPst
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS tarnmail RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(NOT WIN32)
  install(CODE "file(RPATH_CHANGE
    FILE \"\$ENV{DESTDIR}${installed_bindir}/tarnmail\"
    OLD_RPATH [[${tarnmail_built_rpath}]] NEW_RPATH [[${program_rpath}]])")
endif()

# The helpers that lay out pages, which tarnmail starts from there: the component `pages`, which needs
# far more of a system than all else, and is installed only when it is asked for by its name.
foreach(helper tarnmail-pages tarnmail-office)
  if(TARGET ${helper})
    install(TARGETS ${helper} RUNTIME DESTINATION ${helperdir} COMPONENT pages EXCLUDE_FROM_ALL)
  endif()
endforeach()

# The archive commands, which tarnmail starts from there too: the component `archive`, by its name as well.
if(TARGET tarnmail-archive)
  if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(archive_rpath ${CMAKE_INSTALL_FULL_LIBDIR})
  else()
    file(RELATIVE_PATH libdir_from_helper
      ${CMAKE_INSTALL_PREFIX}/${helperdir} ${CMAKE_INSTALL_FULL_LIBDIR})
    set(archive_rpath "$ORIGIN/${libdir_from_helper}")
  endif()
  foreach(program tarnmail-archive tarnmail-search)
    look_in_own_folder(${program} "${archive_rpath}")
    install(TARGETS ${program} RUNTIME DESTINATION ${helperdir} COMPONENT archive EXCLUDE_FROM_ALL)
    install(CODE "file(RPATH_CHANGE
      FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${helperdir}/${program}\"
      OLD_RPATH [[${${program}_built_rpath}]] NEW_RPATH [[${archive_rpath}]])"
      COMPONENT archive EXCLUDE_FROM_ALL)
  endforeach()

  # And the command for clusters, whose modules are where the helpers are.
  set(slurm ${PROJECT_SOURCE_DIR}/plain/slurm)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${slurm}/tarnmail-slurm)
  file(READ ${slurm}/tarnmail-slurm tarnmail_slurm)
  set(place_in_sources "os.path.join(HERE, \"..\", \"lib\", \"tarnpst\")")
  string(FIND "${tarnmail_slurm}" "${place_in_sources}" found)
  if(found EQUAL -1)
    message(FATAL_ERROR "tarnmail-slurm does not look for its modules as it did")
  endif()
  string(REPLACE "${place_in_sources}" "os.path.join(HERE, \"${helperdir_from_program}\")"
    tarnmail_slurm "${tarnmail_slurm}")
  file(WRITE ${PROJECT_BINARY_DIR}/installed/tarnmail-slurm "${tarnmail_slurm}")
  install(PROGRAMS ${PROJECT_BINARY_DIR}/installed/tarnmail-slurm
    DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT archive EXCLUDE_FROM_ALL)
  install(DIRECTORY ${slurm}/tarnslurm DESTINATION ${helperdir}
    COMPONENT archive EXCLUDE_FROM_ALL FILES_MATCHING PATTERN "*.py" PATTERN __pycache__ EXCLUDE)
endif()

install(FILES ${PROJECT_SOURCE_DIR}/Include/TarnPst.h ${PROJECT_SOURCE_DIR}/Include/TarnPstLayout.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/Include/Tarnbase
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

# For programs built against what is installed.
install(EXPORT TarnPst NAMESPACE TarnPst:: FILE TarnPstTargets.cmake DESTINATION ${cmakedir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TarnPstConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_LIST_DIR}/TarnPstConfig.cmake
  ${PROJECT_BINARY_DIR}/TarnPstConfigVersion.cmake
  DESTINATION ${cmakedir})

set(pkgconfigdir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(pkgconfig_comment "# The libraries are in a place of their own, so that nothing may be moved.")
  set(pkgconfig_prefix ${CMAKE_INSTALL_PREFIX})
  set(pkgconfig_libdir ${CMAKE_INSTALL_LIBDIR})
else()
  file(RELATIVE_PATH prefix_from_pkgconfig
    ${CMAKE_INSTALL_PREFIX}/${pkgconfigdir} ${CMAKE_INSTALL_PREFIX})
  string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
  set(pkgconfig_comment "# Found from where this file lies, so that the whole may be moved.")
  set(pkgconfig_prefix "\${pcfiledir}/${prefix_from_pkgconfig}")
  set(pkgconfig_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(pkgconfig_includedir ${CMAKE_INSTALL_INCLUDEDIR})
else()
  set(pkgconfig_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
set(pkgconfig_libraries "-lTarnPst -lTarnbase")
if(WIN32)
  # By their file names, under which programs with a static runtime (-static) find them too.
  set(pkgconfig_libraries "-l:libTarnPst.dll.a -l:libTarnbase.dll.a")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/tarnpst.pc.in ${PROJECT_BINARY_DIR}/tarnpst.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarnpst.pc DESTINATION ${pkgconfigdir})

if(WIN32)
  include(InstallWindows)
endif()

# For people: the component `documents`, which needs nothing to be built.
set(top_documents SECURITY.md)
if(WIN32)
  list(APPEND top_documents CHANGELOG.md)
  set(copyright ${PROJECT_BINARY_DIR}/copyright)
else()
  set(copyright ${PROJECT_SOURCE_DIR}/packaging/copyright)
endif()
foreach(document IN LISTS top_documents)
  install(FILES ${PROJECT_SOURCE_DIR}/${document} DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT documents)
endforeach()
# The README of the sources links files beside itself that are not installed, or under other names:
# such a link becomes plain text.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/README.md)
file(READ ${PROJECT_SOURCE_DIR}/README.md readme)
foreach(name CONTRIBUTING.md CHANGELOG.md LICENSE)
  if(NOT name IN_LIST top_documents)
    string(REGEX REPLACE "\\[([^]]*)\\]\\(${name}\\)" "\\1" readme "${readme}")
  endif()
endforeach()
file(WRITE ${PROJECT_BINARY_DIR}/installed/README.md "${readme}")
install(FILES ${PROJECT_BINARY_DIR}/installed/README.md ${copyright}
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT documents FILES_MATCHING PATTERN "*.md" PATTERN "*.png")
install(DIRECTORY
  ${PROJECT_SOURCE_DIR}/examples/consumers/c ${PROJECT_SOURCE_DIR}/examples/consumers/cpp
  ${PROJECT_SOURCE_DIR}/examples/consumers/shim
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT documents)
install(FILES ${PROJECT_SOURCE_DIR}/examples/embed/embed.c
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/embed COMPONENT documents)
install(FILES
  ${PROJECT_SOURCE_DIR}/examples/embed/catching-shim.h
  ${PROJECT_SOURCE_DIR}/examples/embed/catching-shim.cpp
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/shim COMPONENT documents)

# Completion, where each shell looks for what packages bring.
if(NOT WIN32)
  set(completions ${PROJECT_SOURCE_DIR}/packaging/completions)
  install(FILES ${completions}/tarnmail.bash RENAME tarnmail
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${completions}/_tarnmail
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
  install(FILES ${completions}/tarnmail.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  if(TARGET tarnmail-archive)
    install(FILES ${completions}/tarnmail-slurm.bash RENAME tarnmail-slurm
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
      COMPONENT archive EXCLUDE_FROM_ALL)
    install(FILES ${completions}/_tarnmail-slurm
      DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT archive EXCLUDE_FROM_ALL)
    install(FILES ${completions}/tarnmail-slurm.fish
      DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
      COMPONENT archive EXCLUDE_FROM_ALL)
  endif()
endif()

# compressed(<file> <name> <folder> [<option of install>...]): installs the file as <name>.gz, the
# same bytes every time.
function(compressed file name folder)
  set(packed ${PROJECT_BINARY_DIR}/compressed/${name}.gz)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/compressed)
  add_custom_command(OUTPUT ${packed}
    COMMAND gzip -9nc ${file} > ${packed}
    DEPENDS ${file} VERBATIM)
  set_property(GLOBAL APPEND PROPERTY TARN_COMPRESSED ${packed})
  install(FILES ${packed} DESTINATION ${folder} ${ARGN})
endfunction()
if(NOT WIN32)
  compressed(${PROJECT_SOURCE_DIR}/docs/tarnmail.1 tarnmail.1 ${CMAKE_INSTALL_MANDIR}/man1)
  if(TARGET tarnmail-archive)
    compressed(${PROJECT_SOURCE_DIR}/docs/tarnmail-slurm.1 tarnmail-slurm.1 ${CMAKE_INSTALL_MANDIR}/man1
      COMPONENT archive EXCLUDE_FROM_ALL)
  endif()
  compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md changelog ${CMAKE_INSTALL_DOCDIR})
  compressed(${PROJECT_SOURCE_DIR}/packaging/debian/changelog changelog.Debian ${CMAKE_INSTALL_DOCDIR}
    COMPONENT debian EXCLUDE_FROM_ALL)
  get_property(packed_files GLOBAL PROPERTY TARN_COMPRESSED)
  add_custom_target(compressed_documents ALL DEPENDS ${packed_files})
endif()

# All that is installed or packed, without tests and what else is built.
add_custom_target(shipped)
foreach(part TarnPst Tarnbase tarnmail tarnmail-archive tarnmail-search tarnmail-pages tarnmail-office
    CatchingShim TarnPst_import_library Tarnbase_import_library CatchingShim_import_library
    compressed_documents)
  if(TARGET ${part} AND (WIN32 OR NOT part STREQUAL CatchingShim))
    add_dependencies(shipped ${part})
  endif()
endforeach()

include(Packages)
