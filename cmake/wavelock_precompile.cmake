# Headers of other libraries that a target's files share are read once for all of them: most of the time of a build
# from scratch would go there.
function(wavelock_precompile target)
  target_precompile_headers(${target} PRIVATE ${ARGN})
  # ccache keeps what was compiled with such a header only if it sees where the header comes in.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -fpch-preprocess)
  endif()
endfunction()
