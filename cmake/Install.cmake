# What authors of component types take home: the libraries with their headers, and a
# package for find_package and pkg-config.
include(CMakePackageConfigHelpers)

set(libraries trelrob trelsdf trellayout trelbroker trelstation trelvisual trelsmartcomp)
set(headers include/trelsmartcomp)
set(package lib/cmake/trelsmartcomp)
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
        LIBRARY DESTINATION lib COMPONENT runtime NAMELINK_COMPONENT development
        FILE_SET HEADERS DESTINATION ${headers} COMPONENT development)
install(EXPORT trelsmartcompTargets NAMESPACE trel:: DESTINATION ${package}
        COMPONENT development)

write_basic_package_version_file(${PROJECT_BINARY_DIR}/trelsmartcompConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
configure_file(cmake/trelsmartcomp.pc.in ${PROJECT_BINARY_DIR}/trelsmartcomp.pc @ONLY)
install(FILES cmake/trelsmartcompConfig.cmake
              ${PROJECT_BINARY_DIR}/trelsmartcompConfigVersion.cmake
        DESTINATION ${package} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/trelsmartcomp.pc
        DESTINATION lib/pkgconfig COMPONENT development)
