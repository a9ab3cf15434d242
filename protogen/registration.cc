// What happens once for the whole file: registering it at load, building reflection on first use,
// and shutdown.
#include "protogen/renderers.h"

namespace protogen {
namespace {

const char kState[] = R"(
bool registration_done = false;
internal::Once assign_descriptors_once;
internal::FileReflection<$message_count$, $field_count$> reflection;

// Arrays by message index.
const ::google::protobuf::Descriptor* descriptors[$message_count$];
internal::Reflection* reflections[$message_count$];
const ::google::protobuf::Message* default_instances[$message_count$];

// The canonical encoding of the file's FileDescriptorProto.
const char kSerializedSchema[] =
$bytes$;
const int kSerializedSchemaSize = $size$;
static_assert(sizeof(kSerializedSchema) == kSerializedSchemaSize + 1,
              "kSerializedSchemaSize is not the size of the literals above");

__attribute__((noinline)) void AssignDescriptorsOnce() {
  assign_descriptors_once.Call(&protobuf_AssignDesc_$id$);
}

void RegisterTypes(const ::std::string&) {
  AssignDescriptorsOnce();
  for (int i = 0; i < $message_count$; ++i) {
    ::google::protobuf::MessageFactory::InternalRegisterGeneratedMessage(descriptors[i],
                                                                         default_instances[i]);
  }
}

__attribute__((noinline)) ::google::protobuf::Metadata MetadataOf(int index) {
  AssignDescriptorsOnce();
  ::google::protobuf::Metadata metadata;
  metadata.descriptor = descriptors[index];
  metadata.reflection = reflections[index];
  return metadata;
}

typedef protobuf_Layouts_$id$ Layouts;
typedef protobuf_RequiredFields_$id$ RequiredFields;

)";

const char kFunctions[] = R"(

// Where reflection finds what in an object: the classes' friend, since their members are private.
struct protobuf_Layouts_$id$ {
$offset_declarations$  static const internal::MessageLayout kMessages[$message_count$];
};

// Of classes with virtual functions and a base, offsetof is only conditionally supported; g++ and
// clang++ do support it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
$offset_definitions$
const internal::MessageLayout file::Layouts::kMessages[$message_count$] = {
$layouts$};
#pragma GCC diagnostic pop

__attribute__((cold)) void protobuf_AddDesc_$id$() {
  if (file::registration_done) return;
  file::registration_done = true;
  internal::VerifyVersion(file::kSourcePath);
  ::google::protobuf::DescriptorPool::InternalAddGeneratedFile(file::kSerializedSchema,
                                                               file::kSerializedSchemaSize);
  file::reflection.Register(file::kSchemaPath, &file::RegisterTypes, file::Layouts::kMessages);
$news$$links$  file::reflection.SetDefaultInstances(file::default_instances);
  ::google::protobuf::internal::OnShutdown(&protobuf_ShutdownFile_$id$);
}

void protobuf_AssignDesc_$id$() {
  protobuf_AddDesc_$id$();
  const ::google::protobuf::FileDescriptor* schema =
      ::google::protobuf::DescriptorPool::generated_pool()->FindFileByName(file::kSchemaPath);
  if (schema == nullptr) {
    ::google::protobuf::internal::LogFinisher() =
        ::google::protobuf::internal::LogMessage(::google::protobuf::LOGLEVEL_FATAL,
                                                 file::kSourcePath, __LINE__)
        << "CHECK failed: file != NULL: ";
  }
  file::reflection.BeginAssign();
  for (int i = 0; i < $message_count$; ++i) {
    file::descriptors[i] = schema->message_type(i);
    file::reflections[i] = file::reflection.New(
        i, file::descriptors[i], file::default_instances[i], file::Layouts::kMessages[i]);
  }
}

void protobuf_ShutdownFile_$id$() {
  for (int i = 0; i < $message_count$; ++i) {
    delete file::default_instances[i];
    file::reflection.Delete(file::reflections[i]);
  }
}

// Loading the library registers the file.
ZARVO_CALIBRATION_EXPORT struct StaticDescriptorInitializer_$id$ {
  StaticDescriptorInitializer_$id$() {
    protobuf_AddDesc_$id$();
  }
} static_descriptor_initializer_$id$_;

$default_instances$)";

}  // namespace

std::string RenderRegistration(const File& file) {
  Variables all = {{"id", file.identifier},
                   {"message_count", std::to_string(file.messages.size())},
                   {"field_count", std::to_string(file.field_count)},
                   {"bytes", Indent(ByteLiterals(file.serialized, kMaxColumns - 5), 4)},
                   {"size", std::to_string(file.serialized.size())}};
  for (const Message& message : file.messages) {
    Variables one = {{"class", message.name},
                     {"id", file.identifier},
                     {"i", std::to_string(message.index)},
                     {"count", std::to_string(message.fields.size())}};
    std::string offsets;
    for (const Field& field : message.fields) {
      offsets += "    __builtin_offsetof(" + message.name + ", " + field.name + "_),\n";
    }
    one["offsets"] = offsets;

    all["offset_declarations"] += Fill("  static const int offsets_of_$class$[$count$];\n", one);
    all["offset_definitions"] +=
        Fill("const int file::Layouts::offsets_of_$class$[$count$] = {\n$offsets$};\n", one);
    all["layouts"] += Fill(
        "    {offsets_of_$class$, $count$,\n"
        "     __builtin_offsetof($class$, _has_bits_),\n"
        "     __builtin_offsetof($class$, _internal_metadata_),\n"
        "     sizeof($class$)},\n",
        one);
    all["news"] += Fill(
        "  file::default_instances[$i$] = $class$::default_instance_ =\n"
        "      internal::KnownClass<$class$>::Know(new $class$);\n",
        one);
    all["links"] += Fill("  $class$::InitAsDefaultInstance();\n", one);

    all["default_instances"] += Fill(R"(
const $class$& $class$::default_instance() {
  if (default_instance_ == nullptr) protobuf_AddDesc_$id$();
  return *default_instance_;
}

)",
                                     one);
  }
  return Fill(kState, all) + "}  // namespace file\n}  // namespace\n" + Fill(kFunctions, all);
}

}  // namespace protogen
