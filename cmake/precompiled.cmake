# Headers that are slow to read and that many files of tests read are precompiled. All else does without: its files are
# compiled together where a preset says so, and each alone by scripts/lint FILE and for the package, which find a header
# that is missing.

# Programs and libraries get one kind of code: what is precompiled serves one kind alone.
set(CMAKE_CXX_COMPILE_OPTIONS_PIE ${CMAKE_CXX_COMPILE_OPTIONS_PIC})

# A set of headers, for precompile_with(). What it links tells where they are.
function(add_precompiled name library)  # HEADER ...
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "")
  add_library(${name} OBJECT ${source})
  target_precompile_headers(${name} PRIVATE <algorithm> <chrono> <filesystem> <functional> <map> <memory> <optional>
    <string> <vector> <json/json.h> ${ARGN})
  target_link_libraries(${name} PRIVATE platform_headers ${library})
endfunction()

function(precompile_with set)  # TARGET ...
  foreach(target ${ARGN})
    target_precompile_headers(${target} REUSE_FROM ${set})
  endforeach()
endfunction()
