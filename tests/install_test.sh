#!/usr/bin/env bash
# What `cmake --install` lays out is complete, may be moved, and serves a new user: the program of
# README.md builds with it and runs, by CMake and by pkg-config. So does one that takes the sources.
#
#   install_test.sh CASE BUILD-FOLDER SOURCE-FOLDER RUN-TIME-PREFIX VERSION
#
# layout            the components' files, the SONAME, what the descriptor set holds
# find_package      the README's CMakeLists.txt, on a tree that was moved, and on the build folder;
#                   versions asked for
# pkg_config        the README's compiler call, also where links lead out of the prefix
# geometry          the library calibration_geometry: an example's program, built with
#                   the tree that was moved, with the build folder and by pkg-config; a tree without it
# formats           the library calibration_formats, in the same way
# series            a run-time of another series than the library's is refused, in one sentence
# add_subdirectory  the sources as a part of another project, whose own compiler options are severe
# fetch_content     the same, fetched by CMake
set -euo pipefail

check=$1 build=$2 source=$3 runtime=$4 version=$5
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

source "$(dirname "${BASH_SOURCE[0]}")/consumer.sh"

install_into() { quietly cmake --install "$build" --prefix "$1" "${@:2}"; }

case $check in
  layout)
    library=libcalibration_protolib.so
    install_into "$folder/runtime" --component Runtime
    install_into "$folder/development" --component Development
    install_into "$folder/all"
    # The library's folder is named after the system: lib, lib64, lib/x86_64-linux-gnu.
    libdir=$(cd "$folder/runtime" && dirname "$(find . -name "$library.$version")")
    files() { (cd "$1" && find . ! -type d | sed "s,^$libdir/,LIB/,; s,^\./,," | LC_ALL=C sort); }
    list() { printf '%s\n' "$@" | LC_ALL=C sort; }

    # The public headers, and what they include.
    public_headers() {
      local header=$1 included
      [[ " $headers " == *" $header "* ]] && return
      headers+=" $header"
      for included in $(sed -n 's,^#include "\(calibration_common/.*\)"$,\1,p' \
        "$source/$header"); do
        public_headers "$included"
      done
    }
    headers=""
    public_headers calibration_common/calibration.pb.h
    public_headers calibration_common/record_log.h

    runtime_files=("LIB/$library.$version" "LIB/$library.${version%%.*}")
    cmake_folder=LIB/cmake/calibration_protolib
    schema_folder=share/calibration_protolib/proto/calibration_common
    development_files=("LIB/$library" LIB/pkgconfig/calibration_protolib.pc
      $(printf 'include/%s ' $headers)
      "$schema_folder/calibration.proto" "$schema_folder/calibration.desc"
      share/calibration_protolib/package.xml
      "$cmake_folder/ProtobufRuntime.cmake" "$cmake_folder/calibration_protolibConfig.cmake"
      "$cmake_folder/calibration_protolibConfigVersion.cmake"
      "$cmake_folder/calibration_protolibTargets.cmake"
      "$cmake_folder/calibration_protolibTargets-release.cmake")
    # The library of geometry, where it is built.
    if [[ -e $folder/all/include/calib ]]; then
      geometry=libcalibration_geometry.so
      runtime_files+=("LIB/$geometry.$version" "LIB/$geometry.${version%%.*}")
      development_files+=("LIB/$geometry" LIB/pkgconfig/calibration_geometry.pc
        include/calib/geometry/calibration_geometry.h
        include/calib/geometry/calibration_geometry_c.h
        "$cmake_folder/calibration_geometryTargets.cmake"
        "$cmake_folder/calibration_geometryTargets-release.cmake")
    fi
    if [[ -e $folder/all/include/calib/library ]]; then
      formats=libcalibration_formats.so
      runtime_files+=("LIB/$formats.$version" "LIB/$formats.${version%%.*}")
      development_files+=("LIB/$formats" LIB/pkgconfig/calibration_formats.pc
        include/calib/library/calibration_formats.h
        include/calib/library/calibration_formats_c.h
        "$cmake_folder/calibration_formatsTargets.cmake"
        "$cmake_folder/calibration_formatsTargets-release.cmake")
    fi
    diff <(list "${runtime_files[@]}") <(files "$folder/runtime") || fail "component Runtime"
    diff <(list "${development_files[@]}") \
      <(files "$folder/development" | sed -E 's/(Targets-)[a-z]+/\1release/') ||
      fail "component Development"
    missing=$(comm -13 <(files "$folder/all") \
      <(list "${runtime_files[@]}" "${development_files[@]}" | sed '/Targets-release/d'))
    [[ -z $missing ]] || fail "not installed without naming components: $missing"

    # The command, where it is built, finds the library beside it.
    if [[ -e $folder/all/bin/calib ]]; then
      install_into "$folder/tools" --component Tools
      diff <(list bin/calib share/man/man1/calib.1 share/bash-completion/completions/calib) \
        <(files "$folder/tools") || fail "component Tools"
      quietly "$folder/all/bin/calib" --help
    fi

    soname=$(readelf -dW "$folder/all/$libdir/$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
    [[ $soname == "$library.${version%%.*}" ]] || fail "SONAME is $soname"
    if grep -rlF -e "$folder" -e "$build" -e "$source" "$folder/all" --include='*.cmake' \
      --include='*.pc'; then
      fail "these files name folders of the build or the installation"
    fi
    # One file (field 1, length-delimited), as long as the tests' schema table says, whose first
    # field is its name.
    encoded=$(sed -n 's/^ENCODED_SIZE(\([0-9]*\))$/\1/p' "$source/tests/support/schema.def")
    expected=$(printf '0a%02x%02x0a24 %d' $((encoded & 127 | 128)) $((encoded >> 7)) \
      $((encoded + 3)))
    head=$(od -An -v -tx1 -N5 "$folder/all/$schema_folder/calibration.desc" | tr -d ' \n')
    size=$(stat -c %s "$folder/all/$schema_folder/calibration.desc")
    [[ "$head $size" == "$expected" ]] ||
      fail "the descriptor set begins with $head and has $size bytes, expected ${expected/ / and }"
    ;;

  find_package)
    install_into "$folder/before"
    mv "$folder/before" "$folder/moved"
    make_program
    # Variables of the user's, named like those the package looks things up with.
    build_and_run "$folder/robot" "$folder/moved;$runtime" -Dlibrary=user -Dinclude_dir=user

    cp -r "$folder/robot" "$folder/uninstalled"
    rm -rf "$folder/uninstalled/build"
    build_and_run "$folder/uninstalled" "$build;$runtime"

    mkdir "$folder/versions"
    major=${version%%.*}
    for case in "$major=yes" "$version=yes" "$((major + 1))=no" "$major.99=no" "0.9=no"; do
      for installed in "$folder/moved" "$build"; do
        printf '%s\n' 'cmake_minimum_required(VERSION 3.16)' 'project(versions LANGUAGES CXX)' \
          "find_package(calibration_protolib ${case%=*} CONFIG QUIET)" \
          'message(STATUS "found=${calibration_protolib_FOUND}.")' \
          'find_package(calibration_protolib CONFIG REQUIRED)' \
          'file(SIZE "${calibration_protolib_SCHEMA_DIR}/calibration.desc" size)' \
          >"$folder/versions/CMakeLists.txt"
        rm -rf "$folder/versions/build"
        configure "$folder/versions" "$installed;$runtime"
        ((status == 0)) || fail "asking twice, or the schema's folder: $output"
        found=no
        [[ $output != *found=1.* ]] || found=yes
        [[ $found == "${case#*=}" ]] ||
          fail "version ${case%=*} asked for; expected to be found: ${case#*=}: $output"
      done
    done
    ;;

  pkg_config)
    install_into "$folder/installed"
    make_program
    file=$(find "$folder/installed" -name calibration_protolib.pc)
    libdir=$(dirname "$(dirname "$file")")
    export PKG_CONFIG_PATH="$(dirname "$file"):$runtime/lib/pkgconfig"
    [[ $(pkg-config --modversion calibration_protolib) == "$version" ]] || fail "another version"
    schemas=$(pkg-config --variable schemadir calibration_protolib)
    [[ -r $schemas/calibration_common/calibration.desc ]] ||
      fail "no descriptor set in the folder that the variable schemadir names"
    command=$(readme_block sh)
    # build_robot: with what PKG_CONFIG_PATH leads to, and runs it.
    build_robot() {
      rm -f "$folder/robot/robot" "$folder"/*.binpb
      (cd "$folder/robot" && quietly bash -c "$command")
      (cd "$folder" && LD_LIBRARY_PATH="$libdir:$runtime/lib" robot/robot) ||
        fail "the program failed"
      expect_record "$folder"
    }
    build_robot

    # The folder of libraries stands elsewhere, and a link leads to it.
    library_folder=${libdir#"$folder/installed/"}
    mkdir -p "$folder/linked" "$folder/elsewhere"
    ln -s "$folder/elsewhere" "$folder/linked/${library_folder%%/*}"
    install_into "$folder/linked"
    (
      libdir=$folder/linked/$library_folder
      export PKG_CONFIG_PATH="$libdir/pkgconfig:$runtime/lib/pkgconfig"
      build_robot
    )
    # It is named as a whole.
    quietly cmake -S "$source" -B "$folder/absolute" "-DCMAKE_PREFIX_PATH=$runtime" \
      -DCMAKE_INSTALL_PREFIX=/prefix -DCMAKE_INSTALL_LIBDIR=/elsewhere/lib -DBUILD_TESTING=OFF \
      -DCALIBRATION_GENERATOR=OFF -DCALIBRATION_EXAMPLES=OFF -DCALIBRATION_CALIB=OFF
    said=$(PKG_CONFIG_PATH="$folder/absolute/packaging:$runtime/lib/pkgconfig" pkg-config \
      --variable schemadir calibration_protolib)
    [[ $said == /prefix/share/calibration_protolib/proto ]] ||
      fail "with an absolute folder of libraries, schemadir is '$said'"

    # A run-time of another series is refused here, too.
    series=$(sed -n 's/^Requires: protobuf >= \([0-9.]*\),.*/\1/p' "$file")
    if [[ $series ]]; then
      mkdir "$folder/other"
      minor=${series#3.}
      for case in 2.6.1=no "3.$((minor - 1)).99=no" "$series.0=yes" "$series.99=yes" \
        "3.$((minor + 1)).0=no" "4.$minor.0=no"; do
        printf '%s\n' 'Name: protobuf' 'Description: made up' "Version: ${case%=*}" \
          >"$folder/other/protobuf.pc"
        accepted=no
        PKG_CONFIG_PATH="$folder/other:$(dirname "$file")" pkg-config --libs calibration_protolib \
          >"$folder/log" 2>&1 && accepted=yes
        [[ $accepted == "${case#*=}" ]] || fail "run-time ${case%=*}: accepted: $accepted"
      done
    fi
    ;;

  geometry)
    install_into "$folder/before"
    mv "$folder/before" "$folder/moved"
    mkdir "$folder/robot"
    cp "$source/examples/rectify_pair.cc" "$folder/robot"
    printf '%s\n' 'cmake_minimum_required(VERSION 3.16)' 'project(robot LANGUAGES CXX)' \
      'find_package(calibration_protolib CONFIG REQUIRED COMPONENTS geometry)' \
      'add_executable(robot rectify_pair.cc)' \
      'target_link_libraries(robot PRIVATE calibration_protolib::geometry)' \
      >"$folder/robot/CMakeLists.txt"
    expect_pair() { [[ $("$@") == *"P2[0][3] -50."* ]] || fail "$* says: $("$@" 2>&1)"; }
    for prefix in "$folder/moved" "$build"; do
      rm -rf "$folder/robot/build"
      configure "$folder/robot" "$prefix;$runtime"
      ((status == 0)) || fail "CMake refused the project: $output"
      quietly cmake --build "$folder/robot/build"
      expect_pair "$folder/robot/build/robot"
    done
    file=$(find "$folder/moved" -name calibration_geometry.pc)
    export PKG_CONFIG_PATH=${file%/*}
    [[ $(pkg-config --modversion calibration_geometry) == "$version" ]] || fail "another version"
    # Without the run-time's headers, and in the earliest standard.
    quietly g++ -std=c++11 -Wall -Wextra -Wpedantic -Werror "$folder/robot/rectify_pair.cc" \
      -o "$folder/robot/by_hand" $(pkg-config --cflags --libs calibration_geometry)
    export LD_LIBRARY_PATH=${PKG_CONFIG_PATH%/*}
    expect_pair "$folder/robot/by_hand"

    # Who asks for it where it is not there, is told.
    find "$folder/moved" -name 'calibration_geometryTargets*' -delete
    rm -rf "$folder/robot/build"
    configure "$folder/robot" "$folder/moved;$runtime"
    [[ $status != 0 && $output == *"This calibration_protolib has no component 'geometry'"* ]] ||
      fail "without the component, CMake says: $output"
    ;;

  formats)
    install_into "$folder/before"
    mv "$folder/before" "$folder/moved"
    mkdir "$folder/robot"
    cp "$source/examples/import_cameras.cc" "$folder/robot"
    printf '%s\n' 'cmake_minimum_required(VERSION 3.16)' 'project(robot LANGUAGES CXX)' \
      'find_package(calibration_protolib CONFIG REQUIRED COMPONENTS formats)' \
      'add_executable(robot import_cameras.cc)' \
      'target_link_libraries(robot PRIVATE calibration_protolib::formats)' \
      >"$folder/robot/CMakeLists.txt"
    expect_cameras() {
      said=$("$1" "$source/tests/calib/inputs/camchain.yaml" 2>&1) || fail "$1 fails: $said"
      [[ $said == *"is of kalibr: 2 cameras"* ]] || fail "$1 says: $said"
    }
    for prefix in "$folder/moved" "$build"; do
      rm -rf "$folder/robot/build"
      configure "$folder/robot" "$prefix;$runtime"
      ((status == 0)) || fail "CMake refused the project: $output"
      quietly cmake --build "$folder/robot/build"
      expect_cameras "$folder/robot/build/robot"
    done
    file=$(find "$folder/moved" -name calibration_formats.pc)
    export PKG_CONFIG_PATH="${file%/*}:$runtime/lib/pkgconfig"
    libdir=$(dirname "${file%/*}")
    quietly g++ -std=c++17 "$folder/robot/import_cameras.cc" -o "$folder/robot/by_hand" \
      $(pkg-config --cflags --libs calibration_formats)
    LD_LIBRARY_PATH="$libdir:$runtime/lib" expect_cameras "$folder/robot/by_hand"
    ;;

  series)
    install_into "$folder/installed"
    make_program
    built_for=$(sed -n 's/^calibration_find_protobuf_runtime(.*"\(.*\)")$/\1/p' \
      "$(find "$folder/installed" -name calibration_protolibConfig.cmake)")
    # refusal NUMBER VERSION: of a made-up run-time.
    for case in 2006001=2.6.1 3000000=3.0.0 3001000=3.1.0 3021012=3.21.12 3022000=3.22.0 \
      4022000=4.22.0; do
      number=${case%=*} found=${case#*=}
      other=$folder/$number
      mkdir -p "$other/include/google/protobuf/stubs" "$other/lib"
      echo "#define GOOGLE_PROTOBUF_VERSION $number" \
        >"$other/include/google/protobuf/stubs/common.h"
      touch "$other/lib/libprotobuf.so"
      rm -rf "$folder/robot/build"
      configure "$folder/robot" "$folder/installed;$other"
      if [[ $found == "$built_for".* ]]; then
        ((status == 0)) || fail "$found was refused: $output"
        continue
      fi
      expected="calibration_protolib was built for the protobuf run-time of the $built_for series; "
      expected+="the one found in $other/include is version $found. Name the folder of a "
      expected+="$built_for run-time in CMAKE_PREFIX_PATH, ahead of others"
      case $found in
        2.*) expected+="." ;;
        3.22.* | 4.*) expected+=", or compile calibration_common/calibration.proto with that "
          expected+="run-time's own compiler." ;;
        *) expected+=", or use a calibration_protolib that was built for ${found%.*}." ;;
      esac
      ((status != 0)) || fail "$found was accepted; expected: $expected"
      [[ $output == *"$expected"* && $(grep -o 'CMake Error' <<<"$output" | wc -l) == 1 ]] ||
        fail "$found: expected one error that says: $expected $output"

      # Who can do without the library is told so and goes on.
      mkdir -p "$folder/optional"
      printf '%s\n' 'cmake_minimum_required(VERSION 3.16)' 'project(optional LANGUAGES CXX)' \
        'find_package(calibration_protolib CONFIG QUIET)' \
        'if(calibration_protolib_FOUND)' 'message(FATAL_ERROR "found")' 'endif()' \
        >"$folder/optional/CMakeLists.txt"
      configure "$folder/optional" "$folder/installed;$other"
      [[ $status == 0 && $output != *"CMake Warning"* ]] || fail "QUIET, not REQUIRED: $output"
    done
    ;;

  add_subdirectory)
    make_program
    added="add_compile_options(\${options})\nadd_subdirectory($source calibration)"
    sed -i "s,^find_package.*,$added," "$folder/robot/CMakeLists.txt"
    options="-Wall -Wextra -Wconversion -Wsign-conversion -Wuseless-cast -Wswitch-enum -Werror"
    options+=" -fno-rtti"
    for way in "-DCMAKE_CXX_FLAGS=$options" "-Doptions=${options// /;}"; do
      rm -rf "$folder/robot/build"
      build_and_run "$folder/robot" "$runtime" -DCMAKE_BUILD_TYPE=Debug \
        -DCMAKE_CXX_COMPILER=g++ "$way"
    done
    # The library alone: no generator, no example, no test, nothing to install.
    targets=$(cmake --build "$folder/robot/build" --target help)
    if grep -E 'protogen|stereo_rig|_test|descriptor_set' <<<"$targets"; then
      fail "a project that adds this one builds these, too"
    fi
    quietly cmake --install "$folder/robot/build" --prefix "$folder/installed"
    [[ ! -e $folder/installed ]] || fail "installed unasked: $(find "$folder/installed" -type f)"
    ;;

  fetch_content)
    make_program
    copy_sources "$source" "$folder/sources"
    tar -C "$folder/sources" -czf "$folder/sources.tar.gz" .
    cat >"$folder/fetch" <<END
include(FetchContent)
FetchContent_Declare(calibration_protolib URL "$folder/sources.tar.gz")
FetchContent_MakeAvailable(calibration_protolib)
END
    sed -i -e "/^find_package/{r $folder/fetch" -e 'd}' "$folder/robot/CMakeLists.txt"
    echo 'install(TARGETS robot)' >>"$folder/robot/CMakeLists.txt"
    # Asked for, the library is installed along.
    build_and_run "$folder/robot" "$runtime" -DCMAKE_BUILD_TYPE=Debug -DCALIBRATION_INSTALL=ON \
      -DCMAKE_POLICY_DEFAULT_CMP0135=NEW
    quietly cmake --install "$folder/robot/build" --prefix "$folder/installed"
    [[ -x $folder/installed/bin/robot && -n $(find "$folder/installed" -name '*.so') ]] ||
      fail "not installed: program or library"
    ;;

  *) fail "unknown case" ;;
esac
