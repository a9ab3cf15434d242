// Turns a schema into the two generated files.
#ifndef PROTOGEN_GENERATOR_H_
#define PROTOGEN_GENERATOR_H_

#include <string>

#include "protogen/model.h"

namespace protogen {

struct GeneratedFiles {
  std::string header_name, header;
  std::string source_name, source;
};

GeneratedFiles Generate(const File& file);

}  // namespace protogen

#endif  // PROTOGEN_GENERATOR_H_
