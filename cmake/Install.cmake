# What authors of component types take home: the libraries with their headers, and a
# package for find_package.
set(libraries trelrob trelsdf trellayout trelbroker trelstation trelvisual trelsmartcomp)
foreach(library IN LISTS libraries)
  string(REGEX REPLACE "^trel" "" name ${library})
  set_target_properties(${library} PROPERTIES EXPORT_NAME ${name})
endforeach()

install(TARGETS ${libraries} EXPORT trelsmartcompTargets
        LIBRARY DESTINATION lib
        FILE_SET HEADERS DESTINATION include/trelsmartcomp)
install(EXPORT trelsmartcompTargets NAMESPACE trel:: DESTINATION lib/cmake/trelsmartcomp)
install(FILES cmake/trelsmartcompConfig.cmake DESTINATION lib/cmake/trelsmartcomp)
