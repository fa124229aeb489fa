# What the fuzzers and the tests that replay their findings are made of.
set(fuzz_target_sources
    ${PROJECT_SOURCE_DIR}/fuzz/cabinets.cpp
    ${PROJECT_SOURCE_DIR}/fuzz/cabmodule.cpp
    ${PROJECT_SOURCE_DIR}/fuzz/images.cpp
    ${PROJECT_SOURCE_DIR}/fuzz/quiethost.cpp
    ${PROJECT_SOURCE_DIR}/fuzz/sandbox.cpp
    ${PROJECT_SOURCE_DIR}/fuzz/sparseimage.cpp
    ${PROJECT_SOURCE_DIR}/fuzz/splitset.cpp
    ${PROJECT_SOURCE_DIR}/fuzz/text.cpp)
