# What every target of ours is compiled with; link to OpcOptions to get it.

set(OPC_SANITIZER "" CACHE STRING "Sanitizers to build with, such as address,undefined or thread")
option(OPC_COVERAGE "Count executed lines and branches" OFF)
option(OPC_FUZZ "Link the fuzz targets with libFuzzer, which takes clang" OFF)

find_program(OPC_CCACHE ccache)
if(OPC_CCACHE)
  set(CMAKE_C_COMPILER_LAUNCHER "${OPC_CCACHE}")
  set(CMAKE_CXX_COMPILER_LAUNCHER "${OPC_CCACHE}")
endif()

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

# What is built does not depend on where: paths below the sources begin with "." in debug information and texts, and
# libraries are looked for beside the program. Of several maps that fit, the last one counts. Build folders are all alike,
# so that the compiler cache serves one with what it has from another. Without optimisation debuggers come first.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(OPC_FOLDER_MAPS "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${CMAKE_BINARY_DIR}=./build")
if(CMAKE_SYSROOT)
  list(APPEND OPC_FOLDER_MAPS "-ffile-prefix-map=${CMAKE_SYSROOT}=")
endif()
add_compile_options("$<$<CONFIG:RelWithDebInfo,Release,MinSizeRel>:${OPC_FOLDER_MAPS}>")

add_library(OpcOptions INTERFACE)
target_include_directories(OpcOptions INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_definitions(OpcOptions INTERFACE _POSIX_C_SOURCE=200809L _DEFAULT_SOURCE)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  # A recording may grow beyond 2 GiB. The time keeps its 32 bits, as in the libraries of the target.
  target_compile_definitions(OpcOptions INTERFACE _FILE_OFFSET_BITS=64)
endif()
# Contracting a*b+c into one rounding, as compilers do for arm64, would make results differ between processors.
target_compile_options(OpcOptions INTERFACE
  -ffp-contract=off
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)
# GCC follows the paths through C; what it does not know yet is C++. Sanitizers and coverage insert paths of their own.
if(NOT OPC_SANITIZER AND NOT OPC_COVERAGE)
  target_compile_options(OpcOptions INTERFACE $<$<COMPILE_LANG_AND_ID:C,GNU>:-fanalyzer>)
endif()
target_link_options(OpcOptions INTERFACE -Wl,--as-needed)

if(CMAKE_UNITY_BUILD)
  # Twelve files at a time cost little more than one: most of a file is headers. Sanitizers' and cross builds take them so,
  # and tests everywhere. The compiler takes anonymous namespaces of files that are included for headers'.
  target_compile_options(OpcOptions INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endif()

if(OPC_SANITIZER)
  add_compile_options(-fsanitize=${OPC_SANITIZER} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${OPC_SANITIZER})
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^armv7")
    add_compile_options(-marm) # Thumb functions have odd addresses, which count as misaligned
  endif()
endif()
if(OPC_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
