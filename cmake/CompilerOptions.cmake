# Defines calibration_options, the compiler options that every target of this project shares:
# warnings (CALIBRATION_WERROR makes them errors) and sanitizers (CALIBRATION_SANITIZE). They do not
# reach users, and stand behind the options of a project that this one is a part of.

add_library(calibration_options INTERFACE)
target_compile_options(calibration_options INTERFACE -Wall -Wextra -Wpedantic)
# g++ 10 says of every flattened constructor of the classes that its other name, an alias, is not.
target_compile_options(
  calibration_options
  INTERFACE
    "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,11>>:-Wno-attributes>")
# The library asks messages for their classes; a project that does without run-time type information
# itself can still be given records.
target_compile_options(calibration_options INTERFACE -frtti)
if(CALIBRATION_WERROR)
  target_compile_options(calibration_options INTERFACE -Werror)
endif()

if(CALIBRATION_SANITIZE)
  if(NOT CALIBRATION_SANITIZE MATCHES "^(address,undefined|address|undefined|thread)$")
    message(FATAL_ERROR "CALIBRATION_SANITIZE is '${CALIBRATION_SANITIZE}'; "
                        "expected address,undefined or thread.")
  endif()
  target_compile_options(
    calibration_options INTERFACE -fsanitize=${CALIBRATION_SANITIZE} -fno-sanitize-recover=all
                                  -fno-omit-frame-pointer -g)
  target_link_options(calibration_options INTERFACE -fsanitize=${CALIBRATION_SANITIZE})
endif()
