# Per-target compile options: warnings and optional sanitizers, never directory-wide.

# Warnings for code we own.
function(qx_target_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wpedantic)
endfunction()

# Sanitizers named in QXI18N_SANITIZE, for our own targets only.
function(qx_target_sanitizers target)
  if(QXI18N_SANITIZE)
    string(REPLACE ";" "," _list "${QXI18N_SANITIZE}")
    target_compile_options(${target} PRIVATE -fsanitize=${_list} -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${_list})
  endif()
endfunction()

# Everything a target of this project gets.
function(qx_target_defaults target)
  qx_target_warnings(${target})
  qx_target_sanitizers(${target})
endfunction()
