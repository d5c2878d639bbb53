# How every target of the project is compiled; trel_target() is the one
# place that says so.
function(trel_target target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  # Nobody replaces single functions of our libraries at load time, so that calls
  # within a library may be direct and inlined.
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                           -fno-semantic-interposition)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
endfunction()
