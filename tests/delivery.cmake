# Tests of what surrounds the classes: installation, packages, interfaces kept across versions,
# other languages, documents. Programs outside this build cannot be linked with a library that has
# sanitizers in it.
if(CALIBRATION_SANITIZE)
  calibration_left_out("the build has sanitizers"
    install_test.* abi_test.* package_test version_test interop_test python_* guide_test
    reference_test colcon_test javascript_test mcap_test fleet_test newer_run_times_test)
  return()
endif()

get_filename_component(runtime_prefix "${CALIBRATION_PROTOBUF_INCLUDE_DIR}" DIRECTORY)

foreach(case IN ITEMS layout find_package pkg_config series add_subdirectory fetch_content)
  calibration_script_test(install_test.${case} install_test.sh
    ${case} "${PROJECT_BINARY_DIR}" "${PROJECT_SOURCE_DIR}" "${runtime_prefix}"
    "${PROJECT_VERSION}")
endforeach()
foreach(library IN ITEMS geometry formats)
  if(TARGET calibration_${library})
    calibration_script_test(install_test.${library} install_test.sh
      ${library} "${PROJECT_BINARY_DIR}" "${PROJECT_SOURCE_DIR}" "${runtime_prefix}"
      "${PROJECT_VERSION}")
  else()
    calibration_left_out("the build has no library calibration_${library}" install_test.${library})
  endif()
endforeach()

# --- The binary interface (see abi_test.sh) ---
# The library once more, with debug information, and optimized whatever the build type: otherwise
# the accessors, which are inline, become functions of the library.
add_library(abi_library SHARED)
foreach(property IN ITEMS SOURCES COMPILE_OPTIONS LINK_OPTIONS LINK_LIBRARIES SOVERSION UNITY_BUILD
                          UNITY_BUILD_BATCH_SIZE)
  get_target_property(value calibration_protolib ${property})
  if(property STREQUAL "SOURCES")
    list(TRANSFORM value PREPEND "${PROJECT_SOURCE_DIR}/")
  endif()
  if(NOT value MATCHES "NOTFOUND$")
    set_target_properties(abi_library PROPERTIES ${property} "${value}")
  endif()
endforeach()
set_target_properties(abi_library PROPERTIES OUTPUT_NAME calibration_protolib)
target_compile_options(abi_library PRIVATE -O2 -g)
target_include_directories(abi_library PRIVATE "${PROJECT_SOURCE_DIR}")

set(abi_baseline "${CMAKE_CURRENT_SOURCE_DIR}/abi")
calibration_script_test(abi_test.symbols abi_test.sh
  symbols $<TARGET_FILE:abi_library> "${abi_baseline}")
if(CALIBRATION_PROTOBUF_SERIES STREQUAL "3.21"
   AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU"
   AND CMAKE_CXX_COMPILER_VERSION MATCHES "^12\\.")
  calibration_script_test(abi_test.gate abi_test.sh gate "${CMAKE_CXX_COMPILER}")
  calibration_script_test(abi_test.kept abi_test.sh
    kept $<TARGET_FILE:abi_library> "${abi_baseline}" "${PROJECT_SOURCE_DIR}/calibration_common")
  add_custom_target(abi-baseline
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/abi_test.sh" renew $<TARGET_FILE:abi_library>
            "${abi_baseline}" "${PROJECT_SOURCE_DIR}/calibration_common"
    DEPENDS abi_library
    COMMENT "Renewing the description of the binary interface in tests/abi"
    VERBATIM)
else()
  calibration_left_out("the description is of g++ 12 and the run-time series 3.21"
    abi_test.gate abi_test.kept)
endif()

# --- Debian packages ---
if(CALIBRATION_PROTOBUF_INCLUDE_DIR STREQUAL "/usr/include" AND EXISTS /etc/debian_version)
  calibration_script_test(package_test package_test.sh
    "${PROJECT_SOURCE_DIR}" "${PROJECT_VERSION}" "${CALIBRATION_PROTOBUF_SERIES}"
    "${CALIBRATION_CALIB}")
else()
  calibration_left_out("it needs Debian, and Debian's run-time" package_test)
endif()

calibration_script_test(version_test version_test.sh "${PROJECT_SOURCE_DIR}" "${PROJECT_VERSION}")

# --- Python ---
add_executable(exchange interop/exchange.cc)
target_link_libraries(exchange PRIVATE
  calibration_test_support calibration_protolib calibration_options GTest::gtest)
# Debian's interpreter, which sees Debian's packages; another may come first in PATH.
set(python /usr/bin/python3)
calibration_script_test(interop_test interop/interop_test.sh
  $<TARGET_FILE:exchange> "${PROJECT_BINARY_DIR}" "${python}"
  "${PROJECT_SOURCE_DIR}/python/calibration_protolib")
add_subdirectory(python)

# --- Workspaces of ROS, JavaScript, MCAP, databases ---
# A test that ends with 77 says what it lacks, and is shown as skipped.
calibration_script_test(colcon_test colcon_test.sh "${PROJECT_SOURCE_DIR}" "${runtime_prefix}")
set(skippable_tests colcon_test)
if(CALIBRATION_EXAMPLES)
  calibration_script_test(javascript_test javascript/javascript_test.sh
    "${PROJECT_SOURCE_DIR}" $<TARGET_FILE:stereo_rig> "${CMAKE_CURRENT_BINARY_DIR}/javascript")
  list(APPEND skippable_tests javascript_test)
else()
  calibration_left_out("CALIBRATION_EXAMPLES is off" javascript_test)
endif()
if(CALIBRATION_EXAMPLES AND TARGET calib)
  calibration_script_test(fleet_test fleet/fleet_test.sh
    "${PROJECT_SOURCE_DIR}" $<TARGET_FILE:calib> $<TARGET_FILE:make_fleet>
    "${CMAKE_CURRENT_BINARY_DIR}/fleet")
  list(APPEND skippable_tests fleet_test)
else()
  calibration_left_out("CALIBRATION_EXAMPLES or CALIBRATION_CALIB is off" fleet_test)
endif()
if(TARGET calib)
  calibration_script_test(mcap_test javascript/mcap_test.sh
    "${PROJECT_SOURCE_DIR}" $<TARGET_FILE:calib> "${CMAKE_CURRENT_BINARY_DIR}/javascript")
  list(APPEND skippable_tests mcap_test)
else()
  calibration_left_out("CALIBRATION_CALIB is off" mcap_test)
endif()
set_tests_properties(${skippable_tests} PROPERTIES SKIP_RETURN_CODE 77)
# npm fills one folder for those that use its packages.
list(REMOVE_ITEM skippable_tests colcon_test)
set_tests_properties(${skippable_tests} PROPERTIES RESOURCE_LOCK node_modules)

# --- Documents ---
if(TARGET calibration_peer AND TARGET stereo_rig)
  calibration_script_test(newer_run_times_test newer_run_times_test.sh
    "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}" "${CALIBRATION_PROTOC}"
    $<TARGET_FILE:calibration_protobuf_runtime> "${CALIBRATION_PROTOBUF_INCLUDE_DIR}"
    $<TARGET_FILE:stereo_rig>)
else()
  calibration_left_out("the run-time has no schema compiler, or CALIBRATION_EXAMPLES is off"
    newer_run_times_test)
endif()
set(guide_arguments "${PROJECT_SOURCE_DIR}/docs/guide.md" "${PROJECT_SOURCE_DIR}/docs/python.md"
  --source "${PROJECT_SOURCE_DIR}")
if(NOT CALIBRATION_PROTOBUF_INCLUDE_DIR STREQUAL "/usr/include")
  list(APPEND guide_arguments --runtime "${runtime_prefix}")
endif()
calibration_script_test(guide_test guide_test.py ${guide_arguments})
calibration_script_test(reference_test reference_test.py
  "${PROJECT_BINARY_DIR}/docs/Doxyfile"
  "${PROJECT_SOURCE_DIR}/calibration_common/calibration.proto")
