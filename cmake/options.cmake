# What every target of the project is built with.

add_library(kelvo_options INTERFACE)
target_include_directories(kelvo_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(kelvo_options INTERFACE -Wall -Wextra -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 warns of overlapping copies inside its own std::string when it optimises.
  target_compile_options(kelvo_options INTERFACE -Wno-restrict)
endif()
if(KELVO_WERROR)
  target_compile_options(kelvo_options INTERFACE -Werror)
endif()
if(KELVO_SANITIZE)
  target_compile_options(kelvo_options INTERFACE
    -fsanitize=${KELVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kelvo_options INTERFACE -fsanitize=${KELVO_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # What checks calls through pointers cannot stand in front of a coroutine here.
    target_compile_options(kelvo_options INTERFACE -fno-sanitize=function)
  endif()
endif()

# The store's getters are called for every field of every node, so the programs are optimised across
# files. The libraries hold ordinary code beside what that needs: tests link them without waiting.
include(CheckIPOSupported)
set(KELVO_HAS_IPO OFF)
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND
   NOT KELVO_SANITIZE)
  check_ipo_supported(RESULT KELVO_HAS_IPO OUTPUT KELVO_IPO_MESSAGE LANGUAGES CXX)
  # What is small beside the calls that it saves is to be inlined, however often it is called.
  set(CMAKE_CXX_COMPILE_OPTIONS_IPO -flto=auto -ffat-lto-objects
    --param=max-inline-insns-auto=60 --param=inline-unit-growth=400)
endif()

# kelvo is started once per design and most designs are small: without shared libraries it starts in
# half the time and takes a third of the memory. Position independent, so that its data lies in
# another place each time (cdfg/hash.h).
include(CheckCXXSourceCompiles)
set(KELVO_HAS_STATIC OFF)
if(KELVO_HAS_IPO)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
  check_cxx_source_compiles("#include <string>\nint main() { return std::string().size(); }"
    KELVO_LINKS_STATIC)
  unset(CMAKE_REQUIRED_LINK_OPTIONS)
  set(KELVO_HAS_STATIC ${KELVO_LINKS_STATIC})
endif()

function(kelvo_library name)
  add_library(${name} STATIC ${ARGN})
  target_link_libraries(${name} PUBLIC kelvo_options)
  set_target_properties(${name} PROPERTIES INTERPROCEDURAL_OPTIMIZATION ${KELVO_HAS_IPO})
endfunction()

function(kelvo_executable name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE kelvo_options)
endfunction()

# An executable that people run for its result, or measure.
function(kelvo_program name)
  kelvo_executable(${name} ${ARGN})
  set_target_properties(${name} PROPERTIES INTERPROCEDURAL_OPTIMIZATION ${KELVO_HAS_IPO})
endfunction()
