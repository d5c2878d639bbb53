include("${CMAKE_CURRENT_LIST_DIR}/trelsmartcompTargets.cmake")
