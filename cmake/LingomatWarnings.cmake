# -Wall -Wextra on every target that lingomat's folders define, and -Werror with
# LINGOMAT_WERROR (CI builds that way). Applied target by target rather than through
# add_compile_options, so nothing reaches a project that adds lingomat as a subdirectory,
# and targets added later in any folder cannot be forgotten.
function(lingomat_set_warnings directory)
  get_property(targets DIRECTORY ${directory} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    if(type MATCHES "^(EXECUTABLE|STATIC_LIBRARY|SHARED_LIBRARY|MODULE_LIBRARY|OBJECT_LIBRARY)$")
      target_compile_options(${target} PRIVATE -Wall -Wextra $<$<BOOL:${LINGOMAT_WERROR}>:-Werror>)
    endif()
  endforeach()
  get_property(subdirectories DIRECTORY ${directory} PROPERTY SUBDIRECTORIES)
  foreach(subdirectory IN LISTS subdirectories)
    lingomat_set_warnings(${subdirectory})
  endforeach()
endfunction()
