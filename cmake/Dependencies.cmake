# The libraries that Habitra calls, all from Debian's packages (cmake/packages names them).
find_package(fmt REQUIRED)
find_package(spdlog REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(CLI11 REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(Threads REQUIRED)
find_package(Boost 1.74 REQUIRED)

# Abseil's time zones, from the archives: nine shared libraries less to find and bind at every start.

add_library(habitra_absl_time INTERFACE)
foreach(part time time_zone strings strings_internal int128 base raw_logging_internal throw_delegate spinlock_wait)
  find_library(ABSL_${part}_ARCHIVE libabsl_${part}.a REQUIRED)
  target_link_libraries(habitra_absl_time INTERFACE ${ABSL_${part}_ARCHIVE})
endforeach()

# Of its text functions one part is used, in a module that does without the time zones.
add_library(habitra_absl_strings INTERFACE)
foreach(part strings strings_internal int128 base raw_logging_internal throw_delegate spinlock_wait)
  target_link_libraries(habitra_absl_strings INTERFACE ${ABSL_${part}_ARCHIVE})
endforeach()

# libcsv, xxHash and zstd bring no CMake package, and that of libzip asks for its programs, too.
find_path(CSV_INCLUDE_DIR csv.h REQUIRED)
find_library(CSV_LIBRARY csv REQUIRED)
add_library(CSV::CSV UNKNOWN IMPORTED)
set_target_properties(CSV::CSV PROPERTIES
  IMPORTED_LOCATION ${CSV_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${CSV_INCLUDE_DIR})

find_path(XXHASH_INCLUDE_DIR xxhash.h REQUIRED)
add_library(xxHash::xxHash INTERFACE IMPORTED) # used header-only: XXH_INLINE_ALL
set_target_properties(xxHash::xxHash PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${XXHASH_INCLUDE_DIR})

find_path(ZIP_INCLUDE_DIR zip.h REQUIRED)
find_library(ZIP_LIBRARY zip REQUIRED)
add_library(ZIP::ZIP UNKNOWN IMPORTED)
set_target_properties(ZIP::ZIP PROPERTIES
  IMPORTED_LOCATION ${ZIP_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${ZIP_INCLUDE_DIR})

find_path(ZSTD_INCLUDE_DIR zstd.h REQUIRED)
find_library(ZSTD_LIBRARY zstd REQUIRED)
add_library(zstd::zstd UNKNOWN IMPORTED)
set_target_properties(zstd::zstd PROPERTIES
  IMPORTED_LOCATION ${ZSTD_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${ZSTD_INCLUDE_DIR})

if(HABITRA_TESTS)
  find_package(GTest REQUIRED)
  find_package(rapidcheck REQUIRED)
endif()
if(HABITRA_BENCHMARKS)
  find_package(benchmark REQUIRED)
endif()
