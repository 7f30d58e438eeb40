# Settings for code that ends up inside the plugin module: position-independent, hidden symbols,
# and no GNU unique symbols (they would pin the module in memory and defeat dlclose).
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fno-gnu-unique IRC_HAVE_NO_GNU_UNIQUE)
function(irc_plugin_code target)
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  if(IRC_HAVE_NO_GNU_UNIQUE)
    target_compile_options(${target} PRIVATE -fno-gnu-unique)
  endif()
  if(IRC_BUILD_FUZZ)
    # The fuzzers steer by the coverage of the code under test, not only of their own file.
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  irc_warnings(${target})
endfunction()
