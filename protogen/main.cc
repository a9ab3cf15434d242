// calibration_protogen: writes the record classes of a schema, and its descriptor set.
//
//   calibration_protogen --schema-root=DIR --schema=PATH_BELOW_ROOT --out=DIR
//
// Writes PATH.pb.h, PATH.pb.cc and PATH.desc below the --out folder. Exit code 0: written; 1: the
// schema is refused or wrong, or a file cannot be written (the reason is on standard error, nothing
// or not all is written); 2: wrong command line.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "protogen/generator.h"
#include "protogen/schema.h"

namespace {

const char kUsage[] =
    "usage: calibration_protogen --schema-root=DIR --schema=PATH_BELOW_ROOT --out=DIR\n";

bool TakeOption(const std::string& argument, const std::string& name, std::string* value) {
  const std::string prefix = "--" + name + "=";
  if (argument.compare(0, prefix.size(), prefix) != 0) return false;
  *value = argument.substr(prefix.size());
  return true;
}

bool Write(const std::string& path, const std::string& content) {
  errno = 0;
  std::ofstream out(path, std::ios::binary);
  out << content;
  out.close();
  if (out) return true;
  std::fprintf(stderr, "calibration_protogen: cannot write %s: %s\n", path.c_str(),
               std::strerror(errno));
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  std::string root, schema_name, out;
  for (int i = 1; i < argc; ++i) {
    if (!TakeOption(argv[i], "schema-root", &root) &&
        !TakeOption(argv[i], "schema", &schema_name) && !TakeOption(argv[i], "out", &out)) {
      std::fprintf(stderr, "calibration_protogen: unknown argument %s\n%s", argv[i], kUsage);
      return 2;
    }
  }
  if (root.empty() || schema_name.empty() || out.empty()) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const protogen::Schema schema(root, schema_name);
  for (const std::string& error : schema.errors()) std::fprintf(stderr, "%s\n", error.c_str());
  if (schema.file() == nullptr) return 1;
  const protogen::GeneratedFiles files = protogen::Generate(protogen::BuildModel(*schema.file()));
  return Write(out + "/" + files.header_name, files.header) &&
                 Write(out + "/" + files.source_name, files.source) &&
                 Write(out + "/" + files.descriptor_set_name, files.descriptor_set)
             ? 0
             : 1;
}
