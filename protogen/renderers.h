// The renderers: each writes what one family of operations needs, for the file or for one message,
// out of the pieces that the message's fields contribute (fragments.h).
#ifndef PROTOGEN_RENDERERS_H_
#define PROTOGEN_RENDERERS_H_

#include <set>
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

// The names of the functions that are called on the class of any message, whatever its fields.
std::set<std::string> ClassFunctions();

// The parts of the source that are there once for the file.
std::string RenderRegistration(const File& file);
std::string RenderRequiredFields(const File& file);

// The parts of the source that are there for each message.
std::string RenderObjectModel(const RenderedMessage& rendered);
std::string RenderParsing(const RenderedMessage& rendered);
std::string RenderSerialization(const RenderedMessage& rendered);
std::string RenderMerging(const RenderedMessage& rendered);

}  // namespace protogen

#endif  // PROTOGEN_RENDERERS_H_
