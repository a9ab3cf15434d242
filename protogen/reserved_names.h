// Names that no schema can use, since C++ or its library has taken them wherever generated code is
// compiled.
//
// No list is needed to keep a schema's names and the generator's own apart. Namespaces, variables
// and parameters begin with a small letter, as no message does, and neither begin nor end as
// accessors and members do. What begins with a capital letter stands in a namespace or has an
// underscore, as no message has. Types are named with all their namespaces. What is left are the
// functions of every class, which the renderer of the class tells: see ClassFunctions().
#ifndef PROTOGEN_RESERVED_NAMES_H_
#define PROTOGEN_RESERVED_NAMES_H_

#include <string>

namespace protogen {

// What has taken `name`, such as "a C++ keyword"; empty if it is free. Knows the macros whose names
// are lower case or CamelCase. REQUIRES that the name does not begin with an underscore.
std::string TakenBy(const std::string& name);

}  // namespace protogen

#endif  // PROTOGEN_RESERVED_NAMES_H_
