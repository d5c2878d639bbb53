# What authors of component types take home: the libraries with their headers, and a
# package for find_package and pkg-config.
include(CMakePackageConfigHelpers)

set(libraries trelsmartcomp)
if(TREL_PLATFORM)
  set(needs "include(CMakeFindDependencyMacro)\nfind_dependency(trelplatform)\n")
else()
  list(APPEND libraries trelrob trelsdf trellayout trelbroker trelstation trelvisual)
endif()
set(headers include/trelsmartcomp)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/trelsmartcomp)
foreach(library IN LISTS libraries)
  string(REGEX REPLACE "^trel" "" name ${library})
  get_target_property(type ${library} TYPE)
  set_target_properties(${library} PROPERTIES EXPORT_NAME ${name})
  if(type STREQUAL SHARED_LIBRARY)
    # Until 1.0 any minor version may change what types were built against.
    set_target_properties(${library} PROPERTIES
      VERSION ${PROJECT_VERSION}
      SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  endif()
endforeach()

install(TARGETS ${libraries} EXPORT trelsmartcompTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
        FILE_SET HEADERS DESTINATION ${headers} COMPONENT development)
install(EXPORT trelsmartcompTargets NAMESPACE trel:: DESTINATION ${package}
        COMPONENT development)

write_basic_package_version_file(${PROJECT_BINARY_DIR}/trelsmartcompConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" prefix_from_pc ${prefix_from_pc})
configure_file(cmake/trelsmartcomp.pc.in ${PROJECT_BINARY_DIR}/trelsmartcomp.pc @ONLY)
configure_file(cmake/trelsmartcompConfig.cmake.in ${PROJECT_BINARY_DIR}/trelsmartcompConfig.cmake
               @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/trelsmartcompConfig.cmake
              ${PROJECT_BINARY_DIR}/trelsmartcompConfigVersion.cmake
        DESTINATION ${package} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/trelsmartcomp.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
