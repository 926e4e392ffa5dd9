# find_package(TarnPst) gives TarnPst::TarnPst, the filter, and TarnPst::Tarnbase, its plain kernel.
# The filter brings the kernel along; a program that has the filter loaded at run time links the
# kernel alone. On Windows TarnPst::CatchingShim, for hosts of other compilers, is the filter in
# functions that throw nothing; it brings the kernel along too.
include(${CMAKE_CURRENT_LIST_DIR}/TarnPstTargets.cmake)

if(MSVC)
  # Import libraries in the form that every linker for Windows takes.
  get_filename_component(_tarnpst_libdir ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
  foreach(_tarnpst_library TarnPst Tarnbase CatchingShim)
    set_target_properties(TarnPst::${_tarnpst_library} PROPERTIES
      IMPORTED_IMPLIB_RELEASE ${_tarnpst_libdir}/${_tarnpst_library}.lib)
  endforeach()
  unset(_tarnpst_library)
  unset(_tarnpst_libdir)
endif()
