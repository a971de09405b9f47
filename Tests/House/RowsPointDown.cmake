cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/Module.cmake)
habitra_check_rows(HabitraModel HabitraCore QZKit) # fine
habitra_check_rows(HabitraCore HabitraModel)       # stops here
