// The pieces of code that one field contributes to its class, one for each family of operations.
//
// A rule about a field kind stands in the one function that renders that kind; the renderers of the
// families (renderers.h) only put the pieces of all fields together.
#ifndef PROTOGEN_FRAGMENTS_H_
#define PROTOGEN_FRAGMENTS_H_

#include <string>

#include "protogen/model.h"
#include "protogen/text.h"

namespace protogen {

struct Fragments {
  // Object model
  std::string member;      // the data member
  std::string initialize;  // in SharedCtor(); empty where the member's own constructor does
  std::string destroy;     // in SharedDtor(); empty where the member's own destructor does
  std::string clear;       // in Clear()
  std::string swap;        // in InternalSwap()
  // Accessors
  std::string declarations;  // in the class
  std::string definitions;   // behind the class, inline
  // Parsing from [p, end); leaves MergeBuffered() where the field cannot be read.
  std::string take;
  std::string take_packed;  // the packed run of a repeated number
  // Parsing what has a length from `input`; returns whether it could be read.
  std::string read;
  // Serialization
  std::string write_to_stream;
  std::string write_to_array;
  std::string size;  // adds to total_size
  // Merging, from a field that `from` holds; `bits` are the has-bits of `from`. The has-bits of
  // scalars are merged by the group.
  std::string merge;
};

// Renders `field`, which belongs to `message`.
Fragments RenderField(const Message& message, const Field& field);

// Render a field of one of the five kinds; `variables` are those of FieldVariables().
Fragments RenderScalar(const Field& field, const Variables& variables);
Fragments RenderText(const Field& field, const Variables& variables);
Fragments RenderSubMessage(const Variables& variables);
Fragments RenderRepeatedScalar(const Field& field, const Variables& variables);
Fragments RenderRepeatedMessage(const Variables& variables);

// The variables of the templates of all kinds: class, name, number, tag, tag_size, mask, type (the
// C++ value type), Wire (the type in the names of WireFormatLite's functions), default.
Variables FieldVariables(const Message& message, const Field& field);

// has_x() and the two private functions behind it, the same for all singular kinds.
std::string HasBitDefinitions(const Variables& variables);

}  // namespace protogen

#endif  // PROTOGEN_FRAGMENTS_H_
