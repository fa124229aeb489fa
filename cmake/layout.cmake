# Build trees have the folders that an installation has, as far as its programs
# and library see each other. So one path to the library is right in both, and
# CMake need not fill it up with empty elements until an installer's fits: the
# loader takes those for the current folder.
set(shared ${CMAKE_INSTALL_FULL_BINDIR})
cmake_path(IS_PREFIX shared ${CMAKE_INSTALL_FULL_LIBDIR} NORMALIZE is_shared)
while(NOT is_shared)
  cmake_path(GET shared PARENT_PATH shared)
  cmake_path(IS_PREFIX shared ${CMAKE_INSTALL_FULL_LIBDIR} NORMALIZE is_shared)
endwhile()
foreach(pair IN ITEMS BINDIR=RUNTIME LIBDIR=LIBRARY)
  string(REPLACE "=" ";" pair ${pair})
  list(GET pair 0 folder)
  list(GET pair 1 kind)
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_${folder} BASE_DIRECTORY ${shared}
             OUTPUT_VARIABLE below)
  cmake_path(SET CMAKE_${kind}_OUTPUT_DIRECTORY NORMALIZE ${PROJECT_BINARY_DIR}/${below})
endforeach()

# Programs find the library from wherever the whole was moved to. Where the
# loader looks anyway, CMAKE_SKIP_INSTALL_RPATH leaves this out, but for the
# build tree.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR}
           OUTPUT_VARIABLE library_from_program)
if(CMAKE_SKIP_INSTALL_RPATH)
  # The folder of the build is nothing that a binary should tell.
  set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
else()
  set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
endif()

# For a program that loads the library from its folder.
function(morvunp_program target)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH $ORIGIN/${library_from_program})
endfunction()
