#include "calibration_common/internal/unknown_fields.h"

#include "calibration_common/internal/writers.h"

namespace zarvo {
namespace calibration_internal {

using ::google::protobuf::UnknownField;

namespace {

WireFormatLite::WireType WireTypeOf(UnknownField::Type type) {
  switch (type) {
    case UnknownField::TYPE_VARINT:
      return WireFormatLite::WIRETYPE_VARINT;
    case UnknownField::TYPE_FIXED32:
      return WireFormatLite::WIRETYPE_FIXED32;
    case UnknownField::TYPE_FIXED64:
      return WireFormatLite::WIRETYPE_FIXED64;
    case UnknownField::TYPE_LENGTH_DELIMITED:
      return WireFormatLite::WIRETYPE_LENGTH_DELIMITED;
    case UnknownField::TYPE_GROUP:
      break;
  }
  return WireFormatLite::WIRETYPE_START_GROUP;
}

bool HasGroups(const UnknownFieldSet& fields) {
  for (int i = 0; i < fields.field_count(); ++i) {
    if (fields.field(i).type() == UnknownField::TYPE_GROUP) return true;
  }
  return false;
}

// By the run-time's own merge, for fields that are no groups. Where that cannot copy a text, it
// leaves a last field that shares the text with the field that it comes from.
void AppendWithoutGroups(const UnknownFieldSet& from, UnknownFieldSet* to) {
  const int old_count = to->field_count();
  try {
    to->MergeFrom(from);
  } catch (...) {
    const int last = to->field_count() - 1;
    if (last >= old_count) {
      UnknownField* field = to->mutable_field(last);
      if (field->type() == UnknownField::TYPE_LENGTH_DELIMITED &&
          &field->length_delimited() == &from.field(last - old_count).length_delimited()) {
        *field = UnknownField();  // a number, which owns nothing
      }
    }
    CutBackTo(old_count, to);
    throw;
  }
}

void AppendFields(const UnknownFieldSet& from, UnknownFieldSet* to);

// Makes room for a field that owns something, by one that does not: it is then added to a set that
// need not grow, which is where the run-time would lose what it owns. REQUIRES a field in the set,
// since one that is empty gives its room back.
void MakeRoom(UnknownFieldSet* fields) {
  fields->AddVarint(1, 0);
  fields->DeleteSubrange(fields->field_count() - 1, 1);
}

void AppendField(const UnknownField& field, UnknownFieldSet* to) {
  switch (field.type()) {
    case UnknownField::TYPE_VARINT:
      to->AddVarint(field.number(), field.varint());
      break;
    case UnknownField::TYPE_FIXED32:
      to->AddFixed32(field.number(), field.fixed32());
      break;
    case UnknownField::TYPE_FIXED64:
      to->AddFixed64(field.number(), field.fixed64());
      break;
    case UnknownField::TYPE_LENGTH_DELIMITED:
      MakeRoom(to);
      to->AddLengthDelimited(field.number())->assign(field.length_delimited());
      break;
    case UnknownField::TYPE_GROUP:
      MakeRoom(to);
      AppendFields(field.group(), to->AddGroup(field.number()));
      break;
  }
}

// Field by field if there are groups, of which the run-time's own merge would lose the parts that
// it has copied.
void AppendFields(const UnknownFieldSet& from, UnknownFieldSet* to) {
  if (!HasGroups(from)) return AppendWithoutGroups(from, to);
  const int old_count = to->field_count();
  AddOrUndo(to, [&] {
    to->AddVarint(1, 0);  // for MakeRoom()
    for (int i = 0; i < from.field_count(); ++i) AppendField(from.field(i), to);
  });
  to->DeleteSubrange(old_count, 1);
}

// Not WireFormat::ComputeUnknownFieldsSize(), whose sum has 32 bits in the 3.0 series.
uint64 SizeOfFields(const UnknownFieldSet& fields) {
  uint64 size = 0;
  for (int i = 0; i < fields.field_count(); ++i) {
    const UnknownField& field = fields.field(i);
    // The wire type's bits make no tag longer.
    const uint32 tag_size = static_cast<uint32>(
        CodedOutputStream::VarintSize32(static_cast<uint32>(field.number()) << 3));
    size += tag_size;
    switch (field.type()) {  // no more than four cases: see TakeUnknown()
      case UnknownField::TYPE_VARINT:
        size += static_cast<uint32>(CodedOutputStream::VarintSize64(field.varint()));
        break;
      case UnknownField::TYPE_FIXED32:
        size += 4;
        break;
      case UnknownField::TYPE_FIXED64:
        size += 8;
        break;
      case UnknownField::TYPE_LENGTH_DELIMITED:
        size += StringSize(field.length_delimited());
        break;
      case UnknownField::TYPE_GROUP:
      default:
        size += SizeOfFields(field.group()) + tag_size;
    }
  }
  return size;
}

}  // namespace

// The set of the 3.0 series has its fields in a list of its own, which must not exist without any.
// Of the public calls only SpaceUsedExcludingSelf() tells whether there is one, and only deleting
// no fields frees it.
void CutBackTo(int count, UnknownFieldSet* fields) {
  const int more = fields->field_count() - count;
  if (more > 0 || fields->SpaceUsedExcludingSelf() > 0) fields->DeleteSubrange(count, more);
}

void ClearUnknownFields(Metadata* metadata) { MutableUnknownFields(metadata)->Clear(); }

void MergeUnknownFields(const Metadata& from, Metadata* to) {
  AppendFields(UnknownFields(from), MutableUnknownFields(to));
}

int SizeWithUnknownFields(uint64 known_size, const Metadata& metadata, int* cached_size) {
  *cached_size = SizeOrTooLarge(known_size + SizeOfFields(UnknownFields(metadata)));
  return *cached_size;
}

// What WireFormat::SerializeUnknownFieldsToArray() writes, without the stream that it sets up for
// each message.
uint8* WriteUnknownFieldsToArray(const UnknownFieldSet& fields, uint8* target) {
  for (int i = 0; i < fields.field_count(); ++i) {
    const UnknownField& field = fields.field(i);
    target = WireFormatLite::WriteTagToArray(field.number(), WireTypeOf(field.type()), target);
    switch (field.type()) {  // no more than four cases: see TakeUnknown()
      case UnknownField::TYPE_VARINT:
        target = WriteVarintToArray(field.varint(), target);
        break;
      case UnknownField::TYPE_FIXED32:
        target = CodedOutputStream::WriteLittleEndian32ToArray(field.fixed32(), target);
        break;
      case UnknownField::TYPE_FIXED64:
        target = CodedOutputStream::WriteLittleEndian64ToArray(field.fixed64(), target);
        break;
      case UnknownField::TYPE_LENGTH_DELIMITED:
        target = WriteTextBehindTagToArray(field.length_delimited(), target);
        break;
      case UnknownField::TYPE_GROUP:
      default:
        target = WriteUnknownFieldsToArray(field.group(), target);
        target = WireFormatLite::WriteTagToArray(field.number(), WireFormatLite::WIRETYPE_END_GROUP,
                                                 target);
    }
  }
  return target;
}

}  // namespace calibration_internal
}  // namespace zarvo
