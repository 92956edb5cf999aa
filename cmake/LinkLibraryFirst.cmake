# Links a program so that every function that the library has compiled is the library's own, with its flags.
#
# An inline function may be compiled into the library and into a program that uses its header. Of such copies the
# linker takes the first one, which in the usual order is the program's: tests that are compiled without optimisation
# would then try code that nobody else runs. So the whole library goes before the objects of the program.
function(qx_link_library_first target)
  target_link_libraries(${target} PRIVATE QXEvolution::qxevolution)
  get_target_property(kind qxevolution TYPE)
  if(kind STREQUAL "STATIC_LIBRARY")
    target_link_options(${target} PRIVATE
      LINKER:--whole-archive $<TARGET_FILE:qxevolution> LINKER:--no-whole-archive)
  endif()
endfunction()
