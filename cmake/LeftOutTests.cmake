# calibration_left_out(<reason> <test>...): says that this build has no such tests, and why. A test
# may be a pattern, such as install_test.*.
#
# What a build has and what it says to leave out are together tests/expected_tests.txt, the list of
# all tests: tests/expected_tests.sh checks it.
function(calibration_left_out reason)
  foreach(test IN LISTS ARGN)
    message(STATUS "No test ${test}: ${reason}")
    set_property(GLOBAL APPEND_STRING PROPERTY CALIBRATION_LEFT_OUT "${test}\t${reason}\n")
  endforeach()
endfunction()

# Writes them down in the build folder, for tests/expected_tests.sh.
function(calibration_write_left_out)
  get_property(left_out GLOBAL PROPERTY CALIBRATION_LEFT_OUT)
  file(WRITE "${PROJECT_BINARY_DIR}/left_out_tests.txt" "${left_out}")
endfunction()
