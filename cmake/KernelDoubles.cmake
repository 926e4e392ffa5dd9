# tarn_kernel_doubles(<target> <function>...)
# Puts functions of the program in front of the kernel's, or on Windows of the system's: all code that is linked into the target
# calls __wrap_<function>, which the target defines, and reaches the kernel's own as
# __real_<function>. Both are C functions of the type that Kernel.h declares.
function(tarn_kernel_doubles target)
  foreach(function IN LISTS ARGN)
    if(WIN32)
      # Code calls the kernel through pointers that the linker names __imp_<function>; the pointer
      # to the double takes the place of the one to the kernel.
      set(pointer ${CMAKE_CURRENT_BINARY_DIR}/${target}-${function}.c)
      file(CONFIGURE OUTPUT ${pointer} @ONLY CONTENT [[
extern void __wrap_@function@(void);
void (*const __wrap___imp_@function@)(void) = __wrap_@function@;
]])
      set_source_files_properties(${pointer} PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
      target_sources(${target} PRIVATE ${pointer})
      target_link_options(${target} PRIVATE
        LINKER:--wrap=__imp_${function} LINKER:--defsym=__real_${function}=${function})
    else()
      target_link_options(${target} PRIVATE LINKER:--wrap=${function})
    endif()
  endforeach()
endfunction()
