# What every target of the project is built with.

add_library(kelvo_options INTERFACE)
target_include_directories(kelvo_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(kelvo_options INTERFACE -Wall -Wextra -Wshadow -Wconversion)
if(KELVO_WERROR)
  target_compile_options(kelvo_options INTERFACE -Werror)
endif()
if(KELVO_SANITIZE)
  target_compile_options(kelvo_options INTERFACE
    -fsanitize=${KELVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kelvo_options INTERFACE -fsanitize=${KELVO_SANITIZE})
endif()

# The store's getters are called for every field of every node: let them be inlined across files.
include(CheckIPOSupported)
check_ipo_supported(RESULT KELVO_HAS_IPO OUTPUT KELVO_IPO_MESSAGE LANGUAGES CXX)
if(KELVO_HAS_IPO AND CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT KELVO_SANITIZE)
  set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
endif()

function(kelvo_library name)
  add_library(${name} STATIC ${ARGN})
  target_link_libraries(${name} PUBLIC kelvo_options)
endfunction()

function(kelvo_executable name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE kelvo_options)
endfunction()
