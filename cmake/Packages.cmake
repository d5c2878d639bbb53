# Debian packages of the release: libraries, what their users build with, and the program.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_CONTACT "The authors of smartcomp <authors@smartcomp.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(runtime libtrelsmartcomp${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(development libtrelsmartcomp-dev)
set(host trel-station)
set(CPACK_COMPONENTS_ALL runtime development host)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Dependencies are what the files ask for; our own libraries are named below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
foreach(component IN ITEMS RUNTIME DEVELOPMENT HOST)
  string(TOLOWER ${component} name)
  set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${${name}})
endforeach()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "smart components of a robot cell
Components have properties and signals, connections carry their values from
one to the next, and every change stands in the station document at once.
.
This package holds the libraries.")
# Who links a library gets its package, in this patch version or a later one.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
file(WRITE ${PROJECT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/triggers)
# CPack calls ldconfig from scripts, beside the trigger; and geometry calls nothing of libc.
set(${runtime}_overrides maintscript-calls-ldconfig
    "library-not-linked-against-libc [*/libtrelrob.so.*]")
set(${host}_overrides maintscript-calls-ldconfig)
foreach(component IN ITEMS runtime host)
  set(package ${${component}})
  set(overrides ${${package}_overrides})
  list(TRANSFORM overrides PREPEND "${package}: ")
  list(JOIN overrides "\n" overrides)
  file(WRITE ${PROJECT_BINARY_DIR}/lintian/${package} "${overrides}\n")
  install(FILES ${PROJECT_BINARY_DIR}/lintian/${package} DESTINATION share/lintian/overrides
          COMPONENT ${component})
endforeach()

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION})")
# The description of a component type is a text of Qt.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "qt6-base-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "smart components of a robot cell - development files
Components have properties and signals, connections carry their values from
one to the next, and every change stands in the station document at once.
.
This package holds the headers, and what CMake and pkg-config ask for.")

set(CPACK_DEBIAN_HOST_PACKAGE_SECTION science)
set(CPACK_DEBIAN_HOST_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_HOST_PACKAGE_SUGGESTS "graphviz, gtkwave")
set(CPACK_DEBIAN_HOST_DESCRIPTION "runs stations of smart components without an editor
The program station checks, shows, draws, edits, compares and runs the stations
of a robot cell. It comes with ready component types, such as gates, timers,
conveyors and grippers, and with an example.")

# What Debian asks for of every package.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${PROJECT_BINARY_DIR}/changelog
"${PROJECT_NAME} (${PROJECT_VERSION}) unstable; urgency=medium

  * What users see of this version stands in NEWS.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
configure_file(CHANGELOG.md ${PROJECT_BINARY_DIR}/NEWS COPYONLY)
foreach(text IN ITEMS changelog NEWS)
  execute_process(COMMAND gzip --best --no-name --force --keep ${text}
                  WORKING_DIRECTORY ${PROJECT_BINARY_DIR} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  install(FILES cmake/copyright ${PROJECT_BINARY_DIR}/changelog.gz ${PROJECT_BINARY_DIR}/NEWS.gz
          DESTINATION share/doc/${${component}} COMPONENT ${component})
endforeach()
install(DIRECTORY docs DESTINATION share/doc/${development} COMPONENT development)
install(DIRECTORY examples/pick_and_place DESTINATION share/doc/${host}/examples COMPONENT host)

include(CPack)
