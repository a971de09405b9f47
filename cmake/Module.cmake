# habitra_module(): the one way a room of the house is declared.
#
#   habitra_module(HabitraCore
#     DIRECTORY HabitraCore/Sources/HabitraCore   # folder of the sources, from the top of the tree
#     HEADERS   Streak.h ...                      # may be included by the rooms above
#     SOURCES   Streak.cpp ...                    # everything else: .cpp files and headers kept inside
#     PUBLIC    QZDateTime                        # what the headers use
#     PRIVATE   nlohmann_json::nlohmann_json)     # what only the sources use
#
# Every header is included with its module's name before it, <HabitraCore/Streak.h>, and a module sees the
# include roots of the modules it names and of no other. A module may name only modules that stand below it in
# HABITRA_ROWS; anything else stops the configuration with the offending pair.

# From the ground up. A module may use those of earlier rows.
set(HABITRA_ROWS
  "QZKit"
  "QZLog QZDateTime QZHealthKit"
  "HabitraCore"
  "HabitraModel"
  "HabitraBackup"
  "HabitraApp"
  "HabitraCLI")

function(habitra_row module result)
  set(row 0)
  foreach(names IN LISTS HABITRA_ROWS)
    string(REPLACE " " ";" names "${names}")
    if(module IN_LIST names)
      set(${result} ${row} PARENT_SCOPE)
      return()
    endif()
    math(EXPR row "${row} + 1")
  endforeach()
  set(${result} "none" PARENT_SCOPE)
endfunction()

function(habitra_check_rows module)
  habitra_row(${module} own)
  if(own STREQUAL "none")
    message(FATAL_ERROR "${module} has no row in HABITRA_ROWS (cmake/Module.cmake)")
  endif()
  foreach(other IN LISTS ARGN)
    habitra_row(${other} row)
    if(NOT row STREQUAL "none" AND NOT row LESS own)
      message(FATAL_ERROR "${module} must not use ${other}: it does not stand below it (cmake/Module.cmake)")
    endif()
  endforeach()
endfunction()

# Where <Module/...> is found. A folder that bears the module's name serves as it is; for another one a link with
# the module's name is laid in the build tree, in a folder of its own so that no neighbour shows beside it.
function(habitra_include_root module directory result)
  get_filename_component(name ${directory} NAME)
  if(name STREQUAL module)
    get_filename_component(root ${directory} DIRECTORY)
  else()
    set(root ${CMAKE_BINARY_DIR}/roots/${module})
    file(MAKE_DIRECTORY ${root})
    file(CREATE_LINK ${directory} ${root}/${module} SYMBOLIC)
  endif()
  set(${result} ${root} PARENT_SCOPE)
endfunction()

# One source file per header that includes it first and alone: a header that leans on its includer does not compile.
function(habitra_verify_headers module)
  set(sources)
  foreach(header IN LISTS ARGN)
    string(MAKE_C_IDENTIFIER ${header} name)
    set(source ${CMAKE_BINARY_DIR}/headers/${module}/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include <${module}/${header}>\n")
    list(APPEND sources ${source})
  endforeach()
  if(sources)
    add_library(${module}Headers OBJECT ${sources})
    target_compile_options(${module}Headers PRIVATE -O0 -g0 -fno-sanitize=all)
    target_link_libraries(${module}Headers PRIVATE ${module} habitra_warnings)
  endif()
endfunction()

function(habitra_module module)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DIRECTORY" "HEADERS;SOURCES;PUBLIC;PRIVATE")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "${module}: unexpected ${arg_UNPARSED_ARGUMENTS}")
  endif()
  habitra_check_rows(${module} ${arg_PUBLIC} ${arg_PRIVATE})

  set(directory ${PROJECT_SOURCE_DIR}/${arg_DIRECTORY})
  list(TRANSFORM arg_HEADERS PREPEND ${directory}/ OUTPUT_VARIABLE headers)
  list(TRANSFORM arg_SOURCES PREPEND ${directory}/ OUTPUT_VARIABLE sources)
  habitra_include_root(${module} ${directory} root)

  add_library(${module} STATIC ${headers} ${sources})
  target_include_directories(${module} PUBLIC ${root})
  target_link_libraries(${module} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE} habitra_warnings)
  set_target_properties(${module} PROPERTIES LINKER_LANGUAGE CXX)

  if(HABITRA_VERIFY_HEADERS)
    set(inner ${arg_SOURCES})
    list(FILTER inner INCLUDE REGEX "\\.h$")
    habitra_verify_headers(${module} ${arg_HEADERS})
    if(inner)
      target_link_libraries(${module}Headers PRIVATE ${arg_PRIVATE})
    endif()
  endif()
endfunction()
