# Build trees have the folders that an installation has, as far as its programs
# and library see each other: one path to the library is right in both.
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

# The folder of the build is nothing that a binary should tell.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
