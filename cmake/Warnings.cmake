# Warning flags for the project's own targets (not for third-party code).
function(irc_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(IRC_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
