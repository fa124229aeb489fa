# What the fuzzers and the tests that replay their findings are made of.
set(fuzz_target_sources
    ${CMAKE_CURRENT_LIST_DIR}/cabinets.cpp
    ${CMAKE_CURRENT_LIST_DIR}/cabmodule.cpp
    ${CMAKE_CURRENT_LIST_DIR}/images.cpp
    ${CMAKE_CURRENT_LIST_DIR}/quiethost.cpp
    ${CMAKE_CURRENT_LIST_DIR}/sandbox.cpp
    ${CMAKE_CURRENT_LIST_DIR}/sparseimage.cpp
    ${CMAKE_CURRENT_LIST_DIR}/splitset.cpp
    ${CMAKE_CURRENT_LIST_DIR}/text.cpp)
