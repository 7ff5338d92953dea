# libFuzzer builds: every target of ours is instrumented for coverage and built with AddressSanitizer
# and UndefinedBehaviorSanitizer, so the fuzz targets see into the core, the engine and the decoders.
# Included before the source folders so the flags reach every library.
option(SYLVORA_BUILD_FUZZERS "Build the libFuzzer targets in fuzz/ (clang only)" OFF)
if(SYLVORA_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "SYLVORA_BUILD_FUZZERS needs clang (libFuzzer), not ${CMAKE_CXX_COMPILER_ID}")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
