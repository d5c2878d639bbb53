# How every target of the project is compiled; trel_target() is the one
# place that says so.
include(CheckIPOSupported)
check_ipo_supported(RESULT TREL_HAS_IPO OUTPUT trel_no_ipo LANGUAGES CXX)

function(trel_target target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  # Nobody replaces single functions of our libraries at load time, so that calls
  # within a library may be direct and inlined.
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                           -fno-semantic-interposition)
  get_target_property(type ${target} TYPE)
  # A library gives what Export.h marks, and its users call nothing else.
  if(type MATCHES "SHARED_LIBRARY|MODULE_LIBRARY")
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                               VISIBILITY_INLINES_HIDDEN ON)
  endif()
  # A delivery runs through many small functions of many classes.
  if(TREL_HAS_IPO AND type STREQUAL SHARED_LIBRARY)
    foreach(config RELEASE RELWITHDEBINFO MINSIZEREL)
      set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_${config} ON)
    endforeach()
    target_compile_options(${target} PRIVATE $<$<CONFIG:RelWithDebInfo,Release>:-O3>)
  endif()
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
endfunction()
