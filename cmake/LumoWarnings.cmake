# Warning flags shared by every Lumo target.
function(lumo_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  # GCC 12 reports impossible overlaps inside std::string at -O3 (GCC bug 105329).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(LUMO_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
