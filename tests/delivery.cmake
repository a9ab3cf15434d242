# Tests of what surrounds the classes: installation, packages, interfaces kept across versions,
# other languages, documents. Programs outside this build cannot be linked with a library that has
# sanitizers in it.
if(CALIBRATION_SANITIZE)
  message(STATUS "No tests of installation and packages in a build with sanitizers")
  return()
endif()

get_filename_component(runtime_prefix "${CALIBRATION_PROTOBUF_INCLUDE_DIR}" DIRECTORY)

foreach(case IN ITEMS layout find_package pkg_config series add_subdirectory fetch_content)
  calibration_script_test(install_test.${case} install_test.sh
    ${case} "${PROJECT_BINARY_DIR}" "${PROJECT_SOURCE_DIR}" "${runtime_prefix}"
    "${PROJECT_VERSION}")
endforeach()
