// What happens once for the whole file: registering it at load, building reflection on first use,
// and shutdown.
#include "protogen/renderers.h"

namespace protogen {
namespace {

const char kState[] = R"(
bool registration_done_ = false;
internal::Once protobuf_AssignDescriptors_once_;
internal::FileReflection<$message_count$, $field_count$> file_reflection_;

// By message index.
const ::google::protobuf::Descriptor* descriptors_[$message_count$];
internal::Reflection* reflections_[$message_count$];
const ::google::protobuf::Message* default_instances_[$message_count$];

// The canonical encoding of the file's FileDescriptorProto.
const char kSerializedSchema[] =
$bytes$;
const int kSerializedSchemaSize = $size$;
static_assert(sizeof(kSerializedSchema) == kSerializedSchemaSize + 1,
              "kSerializedSchemaSize is not the size of the literals above");

__attribute__((noinline)) void protobuf_AssignDescriptorsOnce() {
  protobuf_AssignDescriptors_once_.Call(&protobuf_AssignDesc_$id$);
}

void protobuf_RegisterTypes(const std::string&) {
  protobuf_AssignDescriptorsOnce();
  for (int i = 0; i < $message_count$; ++i) {
    ::google::protobuf::MessageFactory::InternalRegisterGeneratedMessage(descriptors_[i],
                                                                         default_instances_[i]);
  }
}

__attribute__((noinline)) ::google::protobuf::Metadata MetadataOf(int index) {
  protobuf_AssignDescriptorsOnce();
  ::google::protobuf::Metadata metadata;
  metadata.descriptor = descriptors_[index];
  metadata.reflection = reflections_[index];
  return metadata;
}

)";

const char kFunctions[] = R"(

// Where reflection finds what in an object: the classes' friend, since their members are private.
struct protobuf_Layouts_$id$ {
$offset_declarations$  static const internal::MessageLayout kMessages[$message_count$];
};

typedef protobuf_Layouts_$id$ Layouts;

// Of classes with virtual functions and a base, offsetof is only conditionally supported; g++ and
// clang++ do support it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
$offset_definitions$
const internal::MessageLayout Layouts::kMessages[$message_count$] = {
$layouts$};
#pragma GCC diagnostic pop

__attribute__((cold)) void protobuf_AddDesc_$id$() {
  if (registration_done_) return;
  registration_done_ = true;
  internal::VerifyVersion(kSourcePath);
  ::google::protobuf::DescriptorPool::InternalAddGeneratedFile(kSerializedSchema,
                                                               kSerializedSchemaSize);
  file_reflection_.Register(kSchemaPath, &protobuf_RegisterTypes, Layouts::kMessages);
$news$$links$  file_reflection_.SetDefaultInstances(default_instances_);
  ::google::protobuf::internal::OnShutdown(&protobuf_ShutdownFile_$id$);
}

void protobuf_AssignDesc_$id$() {
  protobuf_AddDesc_$id$();
  const ::google::protobuf::FileDescriptor* file =
      ::google::protobuf::DescriptorPool::generated_pool()->FindFileByName(kSchemaPath);
  if (file == nullptr) {
    ::google::protobuf::internal::LogFinisher() =
        ::google::protobuf::internal::LogMessage(::google::protobuf::LOGLEVEL_FATAL, kSourcePath,
                                                 __LINE__)
        << "CHECK failed: file != NULL: ";
  }
  file_reflection_.BeginAssign();
  for (int i = 0; i < $message_count$; ++i) {
    descriptors_[i] = file->message_type(i);
    reflections_[i] = file_reflection_.New(i, descriptors_[i], default_instances_[i],
                                           Layouts::kMessages[i]);
  }
}

void protobuf_ShutdownFile_$id$() {
  for (int i = 0; i < $message_count$; ++i) {
    delete default_instances_[i];
    file_reflection_.Delete(reflections_[i]);
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

    all["offset_declarations"] += Fill("  static const int $class$_offsets_[$count$];\n", one);
    all["offset_definitions"] +=
        Fill("const int Layouts::$class$_offsets_[$count$] = {\n$offsets$};\n", one);
    all["layouts"] += Fill(
        "    {$class$_offsets_, $count$,\n"
        "     __builtin_offsetof($class$, _has_bits_),\n"
        "     __builtin_offsetof($class$, _internal_metadata_),\n"
        "     sizeof($class$)},\n",
        one);
    all["news"] +=
        Fill("  default_instances_[$i$] = $class$::default_instance_ = new $class$;\n", one);
    all["links"] += Fill("  $class$::InitAsDefaultInstance();\n", one);

    all["default_instances"] += Fill(R"(
const $class$& $class$::default_instance() {
  if (default_instance_ == nullptr) protobuf_AddDesc_$id$();
  return *default_instance_;
}

)",
                                     one);
  }
  return Fill(kState, all) + "}  // namespace\n" + Fill(kFunctions, all);
}

}  // namespace protogen
