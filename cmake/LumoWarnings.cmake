# Warning flags shared by every Lumo target.
function(lumo_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(LUMO_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
