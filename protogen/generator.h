// Turns a schema into the generated files: its classes, and itself for other languages.
#ifndef PROTOGEN_GENERATOR_H_
#define PROTOGEN_GENERATOR_H_

#include <string>

#include "protogen/model.h"

namespace protogen {

struct GeneratedFiles {
  std::string header_name, header;
  std::string source_name, source;
  std::string descriptor_set_name, descriptor_set;  // a FileDescriptorSet of this one file
};

GeneratedFiles Generate(const File& file);

}  // namespace protogen

#endif  // PROTOGEN_GENERATOR_H_
