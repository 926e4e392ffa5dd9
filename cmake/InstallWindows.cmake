# Beside MinGW's import libraries, which CMake installs by itself: the same as <name>.lib for other
# compilers, made from the .def files alone, and the .def files.
#
# The short form of import libraries is what Microsoft's linker makes and expects. GNU dlltool only
# writes objects whose order matters to a linker, so that LLVM's tool makes these.
find_program(TARN_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
if(NOT TARN_LLVM_DLLTOOL)
  message(FATAL_ERROR "llvm-dlltool is missing (package llvm)")
endif()

# import_library(<name> <def>): <name>.lib and the .def file into the library directory.
function(import_library name def)
  set(library ${PROJECT_BINARY_DIR}/import/${name}.lib)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/import)
  add_custom_command(OUTPUT ${library}
    COMMAND ${TARN_LLVM_DLLTOOL} -m i386:x86-64 -d ${def} -D ${name}.dll -l ${library}
    DEPENDS ${def} VERBATIM)
  add_custom_target(${name}_import_library ALL DEPENDS ${library})
  install(FILES ${library} ${def} DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()
import_library(TarnPst ${PROJECT_SOURCE_DIR}/src/FileFormats/Pst/TarnPst.def)
import_library(Tarnbase ${PROJECT_SOURCE_DIR}/plain/kernel/Tarnbase.def)
import_library(CatchingShim ${PROJECT_SOURCE_DIR}/examples/embed/CatchingShim.def)

# The filter for hosts of other compilers. On other systems a host builds it from the sources.
set(shimdir ${PROJECT_SOURCE_DIR}/examples/embed)
target_include_directories(CatchingShim INTERFACE ${include_installed})
target_link_libraries(CatchingShim INTERFACE $<INSTALL_INTERFACE:TarnPst::Tarnbase>)
install(TARGETS CatchingShim EXPORT TarnPst
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${shimdir}/catching-shim.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# The libraries and the program carry their runtime, whose notices come with them.
set_property(DIRECTORY APPEND PROPERTY
  CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/packaging/copyright-windows)
configure_file(${PROJECT_SOURCE_DIR}/packaging/copyright ${PROJECT_BINARY_DIR}/copyright COPYONLY)
file(READ ${PROJECT_SOURCE_DIR}/packaging/copyright-windows copyright_windows)
file(APPEND ${PROJECT_BINARY_DIR}/copyright "\n${copyright_windows}")
