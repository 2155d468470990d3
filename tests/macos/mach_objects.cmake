# Compiles sources for a Mac with Apple silicon: to Mach-O objects, against the declarations in this folder, with warnings as
# errors. What such an object lacks is Apple's own headers and libraries; docs/macos.md says what that leaves unproved.

find_program(MAC_CLANG clang++-19 REQUIRED)
execute_process(COMMAND "${MAC_CLANG}" -print-resource-dir OUTPUT_VARIABLE mac_resources OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(SET mac_libcxx NORMALIZE "${mac_resources}/../../../include/c++/v1")
find_path(MAC_LIBC bits/alltypes.h PATHS "/usr/include/${CMAKE_SYSTEM_PROCESSOR}-linux-musl" NO_DEFAULT_PATH REQUIRED)
foreach(header "${mac_libcxx}/__config" "${MAC_LIBC}/stdio.h")
  if(NOT EXISTS "${header}")
    message(FATAL_ERROR "${header} is missing: run script/bootstrap")
  endif()
endforeach()

set(mac_declarations "${CMAKE_CURRENT_SOURCE_DIR}/declarations")
set(mac_qt "${QT6_INSTALL_PREFIX}/${QT6_INSTALL_HEADERS}")

# The libraries that are headers alone or plain C, apart from everything else that stands beside them.
set(mac_headers "${CMAKE_CURRENT_BINARY_DIR}/headers")
file(MAKE_DIRECTORY "${mac_headers}")
foreach(header nlohmann expat.h expat_external.h microhttpd.h sqlite3.h)
  find_path(folder "${header}" PATHS /usr/include NO_CACHE REQUIRED)
  file(CREATE_LINK "${folder}/${header}" "${mac_headers}/${header}" SYMBOLIC)
  unset(folder)
endforeach()

get_target_property(mac_warnings orvanta_warnings INTERFACE_COMPILE_OPTIONS)
get_target_property(mac_definitions orvanta_warnings INTERFACE_COMPILE_DEFINITIONS)
list(TRANSFORM mac_definitions PREPEND -D)

set(MAC_FLAGS
  -target arm64-apple-macos14 -std=c++23
  -nostdinc -nostdinc++
  -isystem "${mac_libcxx}" -isystem "${mac_resources}/include" -isystem "${mac_declarations}/c" -isystem "${MAC_LIBC}"
  -isystem "${mac_declarations}/foundation" -isystem "${mac_declarations}/frameworks" -isystem "${mac_headers}"
  -isystem "${mac_qt}" -isystem "${mac_qt}/QtCore" -isystem "${mac_qt}/QtGui" -isystem "${mac_qt}/QtNetwork"
  -isystem "${mac_qt}/QtQml" -isystem "${mac_qt}/QtQmlIntegration" -isystem "${mac_qt}/QtQuick"
  -I "${CMAKE_SOURCE_DIR}/src"
  -include "${mac_declarations}/c/mac_types.h" -D_XOPEN_SOURCE=700 -D_BSD_SOURCE -D_LIBCPP_ENABLE_EXPERIMENTAL
  ${mac_definitions} ${mac_warnings})
set(MAC_OBJECTIVE_FLAGS
  -x objective-c++ -fobjc-arc -fblocks
  -Wnullable-to-nonnull-conversion -Wstrict-selector-match -Wobjc-missing-super-calls -Wundeclared-selector)

# mach_prefix(PREFIX [FLAGS…]): what nearly every source reads, compiled once for all that have the same flags.
function(mach_prefix prefix)
  list(TRANSFORM ARGN REPLACE "^objective-c..$" "objective-c++-header" OUTPUT_VARIABLE flags)
  add_custom_command(OUTPUT "${prefix}"
    COMMAND "${MAC_CLANG}" ${MAC_FLAGS} -x c++-header ${flags} -MD -MF "${prefix}.d" "${CMAKE_CURRENT_SOURCE_DIR}/mac_prefix.h" -o "${prefix}"
    DEPENDS mac_prefix.h
    DEPFILE "${prefix}.d"
    COMMENT "For a Mac: ${prefix}"
    VERBATIM)
endfunction()

# mach_object(OBJECT SOURCE PREFIX [FLAGS…]): the command that makes one object, warnings being errors.
function(mach_object object source prefix)
  cmake_path(GET object PARENT_PATH folder)
  file(MAKE_DIRECTORY "${folder}")
  cmake_path(RELATIVE_PATH source BASE_DIRECTORY "${CMAKE_SOURCE_DIR}" OUTPUT_VARIABLE name)
  add_custom_command(OUTPUT "${object}"
    COMMAND "${MAC_CLANG}" ${MAC_FLAGS} ${ARGN} -include-pch "${prefix}" -MD -MF "${object}.d" -c "${source}" -o "${object}"
    DEPENDS "${source}" "${prefix}"
    DEPFILE "${object}.d"
    COMMENT "For a Mac: ${name}"
    VERBATIM)
endfunction()
