// Values in YAML that every reader takes for what they are, be it one of YAML 1.1 or 1.2: text is
// text, though it looks like a number, and a whole double is no integer.
#ifndef CALIB_TOOLS_YAML_VALUES_H_
#define CALIB_TOOLS_YAML_VALUES_H_

#include <yaml-cpp/yaml.h>

#include <string>

namespace calib {

// A finite number, shortest as it reads back the same, with a point: some readers take a number
// without one for an integer, or with an exponent only for text.
std::string YamlNumber(double value);

// Writes text, in quotes if a reader could take it for a number, a date, a truth value or nothing.
void EmitText(YAML::Emitter* out, const std::string& text);

}  // namespace calib

#endif  // CALIB_TOOLS_YAML_VALUES_H_
