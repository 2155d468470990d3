# The few functions through which every target of the project is made, so that all of them share one
# language level, one set of warnings and one include root.

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_OBJCXX_STANDARD 23)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_OBJCXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

if(ORVANTA_SANITIZE)
  add_compile_options(-fsanitize=${ORVANTA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ORVANTA_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized) # sees what is not there in instrumented code, in std::expected above all
  endif()
endif()

if(ORVANTA_BUILD_FUZZERS)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Warnings for hand-written code. Generated QML code is compiled in targets of its own and is exempt.
add_library(orvanta_warnings INTERFACE)
target_compile_options(orvanta_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
target_compile_definitions(orvanta_warnings INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH)

if(APPLE)
  add_compile_definitions(_LIBCPP_ENABLE_EXPERIMENTAL) # by which libc++ shows std::jthread and std::stop_token before release 20
endif()

# orvanta_library(NAME SOURCES… LIBRARIES…): one static library, with src/ as its include root.
function(orvanta_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  add_library(${name} STATIC ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}/src")
  target_link_libraries(${name} PUBLIC ${arg_LIBRARIES} PRIVATE orvanta_warnings)
endfunction()

# orvanta_program(NAME SOURCES… LIBRARIES…): one executable, left in build/<preset>/bin.
function(orvanta_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/src")
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} orvanta_warnings)
endfunction()

# What the sanitizer presets build: the tests that need no desktop, and of those the ones that run threads of ours.
add_custom_target(unit_tests)
add_custom_target(thread_tests)

# Where the sanitizers find what is not ours.
set(ORVANTA_SANITIZER_OPTIONS
  "TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/tsan.supp"
  "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0")

# orvanta_test(NAME [THREADS | QT_THREADS] [DESKTOP [DESKTOP_OPTIONS…]] SOURCES… LIBRARIES… [LABELS…] [ENVIRONMENT…]): one Qt Test program, registered
# with CTest. DESKTOP runs it inside a virtual desktop of its own (X server, window manager, bus, keyring), set up as
# DESKTOP_OPTIONS say (the options of tests/system/with-desktop); without it the test gets no display at all and Qt's
# offscreen platform. THREADS says that it runs threads that wait on the standard library's or the system's means, and
# is what the thread sanitizer is for. QT_THREADS says that it runs threads of Qt's, or that hand over through Qt's event queue:
# Debian's Qt is not built for that sanitizer, which sees no order there and reports races that are none.
function(orvanta_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "DESKTOP;THREADS;QT_THREADS" "TIMEOUT" "SOURCES;LIBRARIES;LABELS;ENVIRONMENT;DESKTOP_OPTIONS")
  add_executable(${name} ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES
    AUTOMOC ON RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/src" "${CMAKE_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} Qt6::Test orvanta_warnings)
  if(arg_DESKTOP)
    add_test(NAME ${name} COMMAND "${CMAKE_SOURCE_DIR}/tests/system/with-desktop" ${arg_DESKTOP_OPTIONS} -- $<TARGET_FILE:${name}>)
    set(arg_LABELS ${arg_LABELS} desktop)
  else()
    add_test(NAME ${name} COMMAND ${name})
    add_dependencies(unit_tests ${name})
    set(arg_ENVIRONMENT ${arg_ENVIRONMENT} QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software ${ORVANTA_SANITIZER_OPTIONS})
    set(arg_LABELS ${arg_LABELS} unit)
    if(arg_THREADS)
      set(arg_LABELS ${arg_LABELS} threads)
      add_dependencies(thread_tests ${name})
    elseif(arg_QT_THREADS)
      set(arg_LABELS ${arg_LABELS} qt-threads)
    endif()
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES
    TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}" ENVIRONMENT "${arg_ENVIRONMENT}"
    SKIP_RETURN_CODE 77)
endfunction()

# orvanta_qml_module(NAME URI … [QML_FILES…] [RESOURCES…] [SOURCES…] [LIBRARIES…]): a static library that is a QML
# module. The warnings are set on the sources alone, since the module's generated code cannot meet them. What uses the
# module links NAMEplugin as well.
function(orvanta_qml_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "URI" "QML_FILES;RESOURCES;SOURCES;LIBRARIES")
  string(REPLACE "." "/" path "${arg_URI}")
  qt_add_library(${name} STATIC)
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  qt_add_qml_module(${name}
    URI ${arg_URI}
    VERSION 1.0
    RESOURCE_PREFIX /qt/qml
    QML_FILES ${arg_QML_FILES}
    RESOURCES ${arg_RESOURCES}
    SOURCES ${arg_SOURCES}
    DEPENDENCIES QtQuick
    OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/qml/${path}")
  get_target_property(warnings orvanta_warnings INTERFACE_COMPILE_OPTIONS)
  set_source_files_properties(${arg_SOURCES} PROPERTIES COMPILE_OPTIONS "${warnings}")
  get_target_property(definitions orvanta_warnings INTERFACE_COMPILE_DEFINITIONS)
  target_compile_definitions(${name} PRIVATE ${definitions})
  target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}/src" PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${arg_LIBRARIES} Qt6::Qml Qt6::Quick)
endfunction()

# orvanta_wayland_protocols(NAME FILE…): the C code of these protocols as a library of its own, since our warnings are not for it;
# the header of one is NAME-OF-THE-FILE-client.h. The caller has enabled C.
function(orvanta_wayland_protocols name)
  find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
  set(generated "${CMAKE_CURRENT_BINARY_DIR}/protocols")
  file(MAKE_DIRECTORY "${generated}")
  set(sources "")
  foreach(protocol IN LISTS ARGN)
    get_filename_component(protocol_name "${protocol}" NAME_WE)
    add_custom_command(
      OUTPUT "${generated}/${protocol_name}-client.h" "${generated}/${protocol_name}.c"
      COMMAND "${WAYLAND_SCANNER}" client-header "${protocol}" "${generated}/${protocol_name}-client.h"
      COMMAND "${WAYLAND_SCANNER}" private-code "${protocol}" "${generated}/${protocol_name}.c"
      DEPENDS "${protocol}" VERBATIM)
    list(APPEND sources "${generated}/${protocol_name}-client.h" "${generated}/${protocol_name}.c")
  endforeach()
  add_library(${name} STATIC ${sources})
  target_include_directories(${name} SYSTEM PUBLIC "${generated}")
endfunction()
