// What happens once for the whole file: registering it at load, building reflection on first use,
// and shutdown.
#include "protogen/families.h"

namespace protogen {
namespace {

const char kState[] = R"(
bool registration_done_ = false;
runtime::Once protobuf_AssignDescriptors_once_;
runtime::FileReflection<$message_count$, $field_count$> file_reflection_;

$pointers$
// The canonical encoding of the file's FileDescriptorProto.
const char kSerializedSchema[] =
$bytes$;
const int kSerializedSchemaSize = $size$;
static_assert(sizeof(kSerializedSchema) == kSerializedSchemaSize + 1, "and a closing zero");

void protobuf_AssignDescriptorsOnce() {
  protobuf_AssignDescriptors_once_.Call(&protobuf_AssignDesc_$id$);
}

void protobuf_RegisterTypes(const std::string&) {
  protobuf_AssignDescriptorsOnce();
$registers$}

)";

const char kFunctions[] = R"(

// Where reflection finds what in an object: the classes' friend, since their members are private.
struct protobuf_Layouts_$id$ {
$offset_declarations$  static const runtime::MessageLayout kMessages[$message_count$];
};

typedef protobuf_Layouts_$id$ Layouts;

// The classes have virtual functions and one base, for which the compilers give the position of a
// member all the same.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
$offset_definitions$
const runtime::MessageLayout Layouts::kMessages[$message_count$] = {
$layouts$};
#pragma GCC diagnostic pop

void protobuf_AddDesc_$id$() {
  if (registration_done_) return;
  registration_done_ = true;
  runtime::VerifyVersion(kSourcePath);
  ::google::protobuf::DescriptorPool::InternalAddGeneratedFile(kSerializedSchema,
                                                               kSerializedSchemaSize);
  file_reflection_.Register(kSchemaPath, &protobuf_RegisterTypes, Layouts::kMessages);
$news$$links$  const ::google::protobuf::Message* const default_instances[] = {
$instances$  };
  file_reflection_.SetDefaultInstances(default_instances);
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
  const runtime::MessageLayout* const layouts = Layouts::kMessages;
$assigns$}

void protobuf_ShutdownFile_$id$() {
$deletes$}

// Loading the library registers the file.
CALIBRATION_EXPORT struct StaticDescriptorInitializer_$id$ {
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
    all["pointers"] += Fill(
        "const ::google::protobuf::Descriptor* $class$_descriptor_ = nullptr;\n"
        "runtime::Reflection* $class$_reflection_ = nullptr;\n",
        one);
    all["registers"] += Fill(
        "  ::google::protobuf::MessageFactory::InternalRegisterGeneratedMessage(\n"
        "      $class$_descriptor_,\n"
        "      &$class$::default_instance());\n",
        one);
    all["offset_declarations"] += Fill("  static const int $class$_offsets_[$count$];\n", one);
    all["offset_definitions"] +=
        Fill("const int Layouts::$class$_offsets_[$count$] = {\n$offsets$};\n", one);
    all["layouts"] += Fill(
        "    {$class$_offsets_, $count$,\n"
        "     __builtin_offsetof($class$, _has_bits_),\n"
        "     __builtin_offsetof($class$, _internal_metadata_),\n"
        "     sizeof($class$)},\n",
        one);
    all["news"] += Fill("  $class$::default_instance_ = new $class$;\n", one);
    all["links"] += Fill("  $class$::default_instance_->InitAsDefaultInstance();\n", one);
    all["instances"] += Fill("      $class$::default_instance_,\n", one);
    all["assigns"] += Fill(
        "  $class$_descriptor_ = file->message_type($i$);\n"
        "  $class$_reflection_ =\n"
        "      file_reflection_.New($i$, $class$_descriptor_, $class$::default_instance_, "
        "layouts[$i$]);\n",
        one);
    all["deletes"] += Fill(
        "  delete $class$::default_instance_;\n"
        "  file_reflection_.Delete($class$_reflection_);\n",
        one);
    all["default_instances"] += Fill(R"(
const $class$& $class$::default_instance() {
  if (default_instance_ == nullptr) protobuf_AddDesc_$id$();
  return *default_instance_;
}

)",
                                     one);
  }
  return "namespace {\n\n" + Fill(kState, all) + "}  // namespace\n\n" + Fill(kFunctions, all);
}

}  // namespace protogen
