// The families of operations, each of which renders its part of the generated source for one
// message or for the file.
#ifndef PROTOGEN_FAMILIES_H_
#define PROTOGEN_FAMILIES_H_

#include <string>
#include <vector>

#include "protogen/fragments.h"
#include "protogen/model.h"

namespace protogen {

// A message together with the pieces that its fields contribute, in declaration order.
struct RenderedMessage {
  const Message* message;
  std::vector<Fragments> fields;

  const Fragments& of(const Field* field) const { return fields[field->index]; }
};

// The public header, whole.
std::string RenderHeader(const File& file, const std::vector<RenderedMessage>& messages);

// Parts of the source.
std::string RenderRegistration(const File& file);
std::string RenderObjectModel(const RenderedMessage& rendered);
std::string RenderParsing(const RenderedMessage& rendered);
std::string RenderSerialization(const RenderedMessage& rendered);
std::string RenderMerging(const RenderedMessage& rendered);

}  // namespace protogen

#endif  // PROTOGEN_FAMILIES_H_
