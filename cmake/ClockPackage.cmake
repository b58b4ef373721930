# What an integrator installs: the plug-in, the headers, and how CMake and pkg-config find them.
include(CMakePackageConfigHelpers)

# lib/, whatever the system calls its folder of libraries. The plug-in may be in a folder of its own.
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_INSTALL_LIBDIR lib CACHE STRING "Folder of libraries")
endif()
include(GNUInstallDirs)
set(CLOCK_PLUGIN_DIR "" CACHE STRING "Folder of the plug-in in an installation; empty: that of libraries")
if(NOT CLOCK_PLUGIN_DIR)
  set(CLOCK_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR})
endif()
set(CLOCK_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/ClockService)

# clock_add_headers(NAME target AS name FOLDER folder [NEEDS target]): a folder of headers, known
# elsewhere as ClockService::name.
function(clock_add_headers)
  cmake_parse_arguments(PART "" "NAME;AS;FOLDER;NEEDS" "" ${ARGN})
  add_library(${PART_NAME} INTERFACE)
  add_library(ClockService::${PART_AS} ALIAS ${PART_NAME})
  set_target_properties(${PART_NAME} PROPERTIES EXPORT_NAME ${PART_AS})
  target_compile_features(${PART_NAME} INTERFACE cxx_std_17)
  target_include_directories(${PART_NAME} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/${PART_FOLDER}>
    $<INSTALL_INTERFACE:${CLOCK_HEADERS}/${PART_FOLDER}>)
  target_link_libraries(${PART_NAME} INTERFACE ${PART_NEEDS})
endfunction()

# The package finds its files from its own place, so that the whole folder can be moved.
function(clock_check_folders)
  foreach(folder IN ITEMS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR CLOCK_PLUGIN_DIR)
    if(IS_ABSOLUTE "${${folder}}")
      message(FATAL_ERROR "${folder} is absolute: ${${folder}}; should be a folder below the prefix, as lib64")
    endif()
  endforeach()
endfunction()

function(clock_install_package)
  clock_check_folders()
  install(TARGETS ClockService clock_platform clock_interface clock_platform_check
          EXPORT ClockService
          LIBRARY DESTINATION ${CLOCK_PLUGIN_DIR})
  install(DIRECTORY include platform DESTINATION ${CLOCK_HEADERS} FILES_MATCHING PATTERN "*.h")
  install(DIRECTORY conformance DESTINATION ${CLOCK_HEADERS}
          FILES_MATCHING PATTERN "*.h" PATTERN "*.cpp")

  set(package ${CMAKE_INSTALL_LIBDIR}/cmake/ClockService)
  set(version ${PROJECT_BINARY_DIR}/ClockServiceConfigVersion.cmake)
  write_basic_package_version_file(${version} COMPATIBILITY SameMajorVersion)
  install(FILES ${version} DESTINATION ${package})
  install(EXPORT ClockService NAMESPACE ClockService:: FILE ClockServiceConfig.cmake
          DESTINATION ${package})

  # The way from the file to the prefix.
  string(REGEX REPLACE "[^/]+" ".." CLOCK_TO_PREFIX ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  configure_file(cmake/ClockService.pc.in ${PROJECT_BINARY_DIR}/ClockService.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/ClockService.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
