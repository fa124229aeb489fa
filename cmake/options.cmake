# Compiler options that every target of this project shares.
add_library(morvunp_options INTERFACE)
target_compile_options(morvunp_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                                 -Wnon-virtual-dtor -Wold-style-cast)
# Newer versions of clang find what std::stable_sort of gcc 12's library is made
# of deprecated; gcc looks at our own calls.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 15)
  target_compile_options(morvunp_options INTERFACE -Wno-deprecated-declarations)
endif()
if(MORVUNP_WERROR)
  target_compile_options(morvunp_options INTERFACE -Werror)
endif()
if(MORVUNP_SANITIZE)
  set(sanitizers address,undefined)
  if(MORVUNP_SANITIZE STREQUAL "thread")
    set(sanitizers thread)
  endif()
  target_compile_options(morvunp_options INTERFACE -fsanitize=${sanitizers}
                                                   -fno-sanitize-recover=all
                                                   -fno-omit-frame-pointer)
  target_link_options(morvunp_options INTERFACE -fsanitize=${sanitizers})
endif()
# Coverage is counted everywhere. Types that both sides of a module's interface
# know have type information of their own in each.
if(MORVUNP_FUZZ)
  target_compile_options(morvunp_options INTERFACE -fsanitize=fuzzer-no-link
                                                   -fno-sanitize=function,vptr)
endif()
