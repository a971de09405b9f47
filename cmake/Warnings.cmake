# What every target of ours compiles with. Headers of installed libraries are system headers and stay out of it.
add_library(habitra_warnings INTERFACE)
target_compile_options(habitra_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Werror
  -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wunused -Wimplicit-fallthrough -Wextra-semi
  -Wno-missing-field-initializers # members left out of {.a = 1} have defaults that are meant
  # GCC 12 sees overlapping copies inside its own std::string where there are none (its bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wuseless-cast>)
