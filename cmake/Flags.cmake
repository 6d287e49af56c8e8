# Flags that every target of the project shares, gathered in one interface target.
add_library(ordovan_flags INTERFACE)
target_include_directories(ordovan_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(ordovan_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wnull-dereference
  -Wformat=2 -Wimplicit-fallthrough -fno-strict-aliasing -fstack-protector-strong)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 warns about correct uses of std::string and std::optional in its own headers.
  target_compile_options(ordovan_flags INTERFACE -Wno-null-dereference -Wno-maybe-uninitialized -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # libstdc++ 12 uses its own deprecated get_temporary_buffer in std::stable_sort.
  target_compile_options(ordovan_flags INTERFACE -Wno-deprecated-declarations)
  find_program(LLD NAMES ld.lld-19 ld.lld)
  if(LLD)
    target_link_options(ordovan_flags INTERFACE --ld-path=${LLD})
  endif()
endif()
if(ORDOVAN_WARNINGS_ARE_ERRORS)
  target_compile_options(ordovan_flags INTERFACE -Werror)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  target_compile_definitions(ordovan_flags INTERFACE _FORTIFY_SOURCE=2)
else()
  target_compile_definitions(ordovan_flags INTERFACE _GLIBCXX_ASSERTIONS)
endif()
if(ORDOVAN_SANITIZE)
  # No optimizing and little debug information: compiling takes a third of the time, and a stack still names its lines.
  target_compile_options(ordovan_flags INTERFACE -fsanitize=${ORDOVAN_SANITIZE} -fno-sanitize-recover=all
                                                 -fno-omit-frame-pointer -g1)
  target_link_options(ordovan_flags INTERFACE -fsanitize=${ORDOVAN_SANITIZE})
endif()
if(ORDOVAN_COVERAGE)
  # The counters live in a file that each program maps as it starts (%c): what a killed child or one that dropped its
  # privileges has run counts, too. The name is built in because some tests start programs with an environment of their
  # own.
  set(profile -fprofile-instr-generate=${PROJECT_BINARY_DIR}/profiles/%c%m.profraw)
  target_compile_options(ordovan_flags INTERFACE ${profile} -fcoverage-mapping
                                                 "SHELL:-mllvm -runtime-counter-relocation" -g0)
  target_link_options(ordovan_flags INTERFACE ${profile})
endif()
