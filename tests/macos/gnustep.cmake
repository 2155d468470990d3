# Runs the adapters, unchanged, on another Foundation: GNUstep's, with fakes in the place of the other frameworks. Memory is not
# managed as on a Mac: there is no ARC here.

set(CMAKE_OBJCXX_COMPILER "${MAC_CLANG}")
enable_language(OBJCXX)

find_path(GNUSTEP_HEADERS Foundation/Foundation.h PATHS /usr/include/GNUstep NO_DEFAULT_PATH REQUIRED)
file(GLOB objc_folders /usr/lib/gcc/${CMAKE_LIBRARY_ARCHITECTURE}/*)
find_path(OBJC_HEADERS objc/objc.h PATHS ${objc_folders} PATH_SUFFIXES include NO_DEFAULT_PATH REQUIRED)
find_library(OBJC_LIBRARY objc PATHS ${objc_folders} NO_DEFAULT_PATH REQUIRED)
find_library(GNUSTEP_LIBRARY gnustep-base REQUIRED)
find_library(BLOCKS_LIBRARY BlocksRuntime REQUIRED)

add_library(gnustep INTERFACE)
set(foundation_of_mac "${CMAKE_CURRENT_SOURCE_DIR}/gnustep/include/foundation_of_mac.h")
foreach(option -fobjc-runtime=gcc -fblocks -fexceptions -fobjc-exceptions -fconstant-string-class=NSConstantString
    "SHELL:-include ${foundation_of_mac}")
  target_compile_options(gnustep INTERFACE "$<$<COMPILE_LANGUAGE:OBJCXX>:${option}>")
endforeach()
target_compile_definitions(gnustep INTERFACE GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_RUNTIME=1 _NATIVE_OBJC_EXCEPTIONS)
target_include_directories(gnustep SYSTEM INTERFACE
  "${CMAKE_CURRENT_SOURCE_DIR}/gnustep/include" "${CMAKE_CURRENT_SOURCE_DIR}/declarations/frameworks" "${GNUSTEP_HEADERS}" "${OBJC_HEADERS}")
# Blocks first: GNUstep's library has remains of its own.
target_link_libraries(gnustep INTERFACE "${BLOCKS_LIBRARY}" "${GNUSTEP_LIBRARY}" "${OBJC_LIBRARY}")

set(run_here ${adapters})
list(FILTER run_here EXCLUDE REGEX "/(native_view|workspace_application_directory|bundle_application_folders|platform|console_platform)\\.mm$")
file(GLOB fakes CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/gnustep/fakes/*.mm")
# Their own stand in the place of what the library has under the same names.
set_source_files_properties(${fakes} PROPERTIES COMPILE_OPTIONS "-Wno-objc-protocol-method-implementation;-Wno-pedantic;-Wno-conversion")

# As objects, since nobody names a fake's class when linking.
add_library(macos_on_gnustep OBJECT ${run_here} ${helpers} ${fakes} "${layer}/hosted_content.h")
set_target_properties(macos_on_gnustep PROPERTIES AUTOMOC ON)
target_include_directories(macos_on_gnustep PRIVATE "${CMAKE_SOURCE_DIR}/src" "${CMAKE_SOURCE_DIR}/tests")
target_link_libraries(macos_on_gnustep PUBLIC gnustep orvanta_platform_portable orvanta_platform_interfaces Qt6::Core Qt6::Gui Qt6::Quick PRIVATE orvanta_warnings)

set(contracts "${CMAKE_SOURCE_DIR}/tests/support/contracts")
set(defaults "HOME=${CMAKE_CURRENT_BINARY_DIR}/home")
file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/home")
orvanta_test(test_macos_stores SOURCES gnustep/test_macos_stores.cpp
    ${contracts}/cloud_store_contract.h ${contracts}/key_value_store_contract.h ${contracts}/secret_store_contract.h
  LIBRARIES macos_on_gnustep LABELS macos ENVIRONMENT ${defaults})
orvanta_test(test_macos_workspace SOURCES gnustep/test_macos_workspace.cpp
    ${contracts}/activation_monitor_contract.h ${contracts}/motion_preference_contract.h
    ${contracts}/running_applications_contract.h ${contracts}/screens_contract.h ${contracts}/url_opener_contract.h
  LIBRARIES macos_on_gnustep LABELS macos ENVIRONMENT ${defaults})
orvanta_test(test_macos_website SOURCES gnustep/test_macos_website.cpp
    ${contracts}/dns_proxy_manager_contract.h ${contracts}/extension_manager_contract.h
    ${contracts}/filter_manager_contract.h ${contracts}/system_notifications_contract.h
  LIBRARIES macos_on_gnustep LABELS macos ENVIRONMENT ${defaults})
orvanta_test(test_macos_sampling SOURCES gnustep/test_macos_sampling.cpp
    ${contracts}/idle_source_contract.h ${contracts}/process_lister_contract.h ${contracts}/system_focus_contract.h
  LIBRARIES macos_on_gnustep LABELS macos ENVIRONMENT ${defaults})
orvanta_test(test_macos_panels SOURCES gnustep/test_macos_panels.cpp ${contracts}/overlay_panels_contract.h
  LIBRARIES macos_on_gnustep LABELS macos ENVIRONMENT ${defaults})
