# What every target of ours compiles with. Headers of installed libraries are system headers and stay out of it.
add_library(habitra_warnings INTERFACE)
target_compile_options(habitra_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Werror
  -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wunused -Wimplicit-fallthrough -Wextra-semi
  -Wno-missing-field-initializers # members left out of {.a = 1} have defaults that are meant
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wuseless-cast>)
