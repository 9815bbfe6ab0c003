# What every target of the project is compiled with. Contraction is off everywhere: a seeded plan repeats to the bit on
# every machine.
function(orvane_compile_options target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_compile_options(${target} PRIVATE -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow)
  if(BUILD_SHARED_LIBS AND NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  endif()
  if(ORVANE_STRICT)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# A layer: its sources go into the library.
function(orvane_layer layer)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${layer}/*.cpp)
  target_sources(orvane PRIVATE ${sources})
endfunction()

# The tests of a layer: one executable, its cases found at test time.
function(orvane_layer_tests layer)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/${layer}/*.cpp)
  if(sources)
    add_executable(${layer}_tests ${sources})
    orvane_compile_options(${layer}_tests)
    target_link_libraries(${layer}_tests PRIVATE orvane_test_support)
    if(NOT ORVANE_STRICT)
      target_precompile_headers(${layer}_tests REUSE_FROM orvane_test_support)
    endif()
    gtest_discover_tests(${layer}_tests TEST_PREFIX ${layer}. DISCOVERY_MODE PRE_TEST)
  endif()
endfunction()
