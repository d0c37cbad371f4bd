# Compiler settings and the two helpers that every folder's CMakeLists uses.

add_library(project_warnings INTERFACE)
# Libraries register verbs and formats when they are loaded, so none may be dropped for want of a symbol in use.
add_link_options(-Wl,--no-as-needed)

target_compile_options(project_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                       -Wno-missing-field-initializers # designated initializers leave the rest at its default on purpose
                       # false alarms of GCC 12 on string concatenation
                       $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-stringop-overflow>)

if(LODEX_SANITIZE)
  add_compile_options(-fsanitize=${LODEX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g1)
  add_link_options(-fsanitize=${LODEX_SANITIZE})
  if(LODEX_SANITIZE MATCHES "thread")
    include_directories(BEFORE ${PROJECT_SOURCE_DIR}/cmake/thread_sanitizer)
  endif()
endif()

# shipped_library(NAME)
# A shared library that is installed. Releases of one minor version fit each other.
function(shipped_library NAME)
  set_target_properties(${NAME} PROPERTIES VERSION ${PROJECT_VERSION}
                        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  set_property(GLOBAL APPEND PROPERTY LODEX_LIBRARIES ${NAME})
endfunction()

# project_library(NAME [QT [OWN_HEADERS]] [LINK targets...] [PUBLIC_LINK targets...])
# A shared library of all sources of the current folder and of its verbs/. A new source file is found by itself.
# OWN_HEADERS is for definitions that change what the toolkit's headers say: their compiled form is then not shared.
function(project_library NAME)
  cmake_parse_arguments(ARG "QT;OWN_HEADERS" "" "LINK;PUBLIC_LINK" ${ARGN})
  file(GLOB SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h
       ${CMAKE_CURRENT_SOURCE_DIR}/verbs/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/verbs/*.h
       ${CMAKE_CURRENT_SOURCE_DIR}/*.qrc)
  add_library(${NAME} SHARED ${SOURCES})
  target_link_libraries(${NAME} PUBLIC host ${ARG_PUBLIC_LINK} PRIVATE project_warnings ${ARG_LINK})
  shipped_library(${NAME})
  if(ARG_QT)
    set_target_properties(${NAME} PROPERTIES AUTOMOC ON AUTORCC ON)
    target_link_libraries(${NAME} PUBLIC Qt6::Widgets)
  endif()
  if(ARG_OWN_HEADERS)
    target_precompile_headers(${NAME} PRIVATE ${STANDARD_HEADERS} ${WIDGET_HEADERS})
  elseif(ARG_QT)
    target_precompile_headers(${NAME} REUSE_FROM widget_headers)
  else()
    target_precompile_headers(${NAME} REUSE_FROM plain_headers)
  endif()
endfunction()

find_program(XVFB_RUN xvfb-run)

# project_test(NAME [QT [CAMERA]] [LINK targets...])
# One test program of all sources of the current folder; a Qt one runs without a display, one with CAMERA in real windows
# of a virtual one.
function(project_test NAME)
  cmake_parse_arguments(ARG "QT;CAMERA" "" "LINK" ${ARGN})
  file(GLOB SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  add_executable(${NAME} ${SOURCES})
  target_link_libraries(${NAME} PRIVATE project_warnings test_support ${ARG_LINK})
  if(ARG_QT)
    set_target_properties(${NAME} PROPERTIES AUTOMOC ON)
    target_link_libraries(${NAME} PRIVATE qt_test_main)
    target_precompile_headers(${NAME} REUSE_FROM widget_test_headers)
  else()
    target_link_libraries(${NAME} PRIVATE GTest::gtest_main)
    target_precompile_headers(${NAME} REUSE_FROM plain_test_headers)
  endif()
  set(PLATFORM offscreen)
  if(ARG_CAMERA)
    if(NOT XVFB_RUN)
      message(STATUS "xvfb-run is not installed: ${NAME} is built and not run")
      return()
    endif()
    set(PLATFORM xcb)
    add_test(NAME ${NAME} COMMAND ${XVFB_RUN} -a -s "-screen 0 1280x900x24" $<TARGET_FILE:${NAME}>)
    set_tests_properties(${NAME} PROPERTIES RESOURCE_LOCK display) # each one brings all cores to work by itself
  else()
    add_test(NAME ${NAME} COMMAND ${NAME})
  endif()
  set_tests_properties(${NAME} PROPERTIES TIMEOUT 600 ENVIRONMENT
    "QT_QPA_PLATFORM=${PLATFORM};LC_ALL=C.UTF-8;ASAN_OPTIONS=detect_leaks=0;UBSAN_OPTIONS=print_stacktrace=1")
endfunction()

# module_part(NAME)
# Objects of all sources of the current folder for the module; they see host/ and Qt, nothing of the embedded host.
function(module_part NAME)
  file(GLOB SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  add_library(${NAME} OBJECT ${SOURCES})
  target_include_directories(${NAME} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${NAME} PUBLIC host Qt6::Widgets PRIVATE project_warnings)
  set_target_properties(${NAME} PROPERTIES AUTOMOC ON)
  target_precompile_headers(${NAME} REUSE_FROM widget_headers)
endfunction()

# careful_rounding(FILE...)
# For sources that round doubles through float: GCC 12 loses the rounding where it pairs such conversions into vectors.
function(careful_rounding)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS -fno-tree-slp-vectorize)
  endif()
endfunction()
