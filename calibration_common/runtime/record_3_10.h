// The base class of every record from 3.10 on (see runtime.h).
//
// These run-times ask their messages other questions than the 3.0 series did: they parse through
// ParseContext and write through EpsCopyOutputStream. Record stands between Message and the
// classes: it declares the 3.0-series virtuals, which the classes implement, and answers the
// run-time's own through them, so that code that only knows a Message& works (record_parse_3_10.h,
// record_write_3_10.h). Calls on a concrete class do not take that way: Record declares the
// run-time's parse and serialize calls again, with plain bodies over the coded streams.
#ifndef ZARVO_CALIBRATION_RUNTIME_RECORD_3_10_H_
#define ZARVO_CALIBRATION_RUNTIME_RECORD_3_10_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/unknown_field_set.h>

#include <climits>
#include <cstddef>
#include <istream>
#include <memory>
#include <ostream>
#include <string>

#include "calibration_common/attributes.h"

namespace zarvo {
namespace calibration_internal {

using ::google::protobuf::Message;
using ::google::protobuf::uint8;
using ::google::protobuf::UnknownFieldSet;
using ::google::protobuf::internal::ParseContext;
using ::google::protobuf::io::CodedInputStream;
using ::google::protobuf::io::CodedOutputStream;
using ::google::protobuf::io::EpsCopyOutputStream;
using ::google::protobuf::io::ZeroCopyInputStream;
using ::google::protobuf::io::ZeroCopyOutputStream;

// Some of what the classes implement is virtual in the run-time as well, in some of the releases.
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Winconsistent-missing-override"
#endif

class ZARVO_CALIBRATION_EXPORT Record : public RecordSerialize {
 public:
  // What the classes implement.
  virtual Message* New() const = 0;
  Message* New(::google::protobuf::Arena* arena) const override = 0;
  virtual bool MergePartialFromCodedStream(CodedInputStream* input) = 0;
  virtual int ByteSize() const = 0;
  virtual void SerializeWithCachedSizes(CodedOutputStream* output) const = 0;
  virtual uint8* SerializeWithCachedSizesToArray(uint8* target) const = 0;
  virtual void CopyFrom(const Message& from) = 0;

  // What the run-time asks. The size of a record of 2 GiB or more is 2^32 - 1: more than the
  // run-time writes, as is the size of a message around it.
  size_t ByteSizeLong() const final { return static_cast<unsigned>(ByteSize()); }

  const char* _InternalParse(const char* ptr, ParseContext* context) final;
  uint8* _InternalSerialize(uint8* target, EpsCopyOutputStream* stream) const final;

  // The run-time's calls for a whole record, on a concrete class. They accept, refuse, write and
  // report what the run-time's own do: see google/protobuf/message_lite.h.
  bool MergeFromCodedStream(CodedInputStream* input) {
    return MergePartialFromCodedStream(input) && HasAllRequired();
  }
  bool ParseFromCodedStream(CodedInputStream* input) {
    Clear();
    return MergeFromCodedStream(input);
  }
  bool ParsePartialFromCodedStream(CodedInputStream* input) {
    Clear();
    return MergePartialFromCodedStream(input);
  }
  bool ParseFromZeroCopyStream(ZeroCopyInputStream* input) {
    CodedInputStream decoder(input);
    return ParseFromCodedStream(&decoder) && decoder.ConsumedEntireMessage();
  }
  bool ParsePartialFromZeroCopyStream(ZeroCopyInputStream* input) {
    CodedInputStream decoder(input);
    return ParsePartialFromCodedStream(&decoder) && decoder.ConsumedEntireMessage();
  }
  bool MergeFromBoundedZeroCopyStream(ZeroCopyInputStream* input, int size) {
    return MergePartialFromBoundedZeroCopyStream(input, size) && HasAllRequired();
  }
  bool MergePartialFromBoundedZeroCopyStream(ZeroCopyInputStream* input, int size) {
    if (size < 0) return false;
    CodedInputStream decoder(input);
    decoder.PushLimit(size);
    return MergePartialFromCodedStream(&decoder) && decoder.ConsumedEntireMessage() &&
           decoder.BytesUntilLimit() == 0;
  }
  bool ParseFromBoundedZeroCopyStream(ZeroCopyInputStream* input, int size) {
    Clear();
    return MergeFromBoundedZeroCopyStream(input, size);
  }
  bool ParsePartialFromBoundedZeroCopyStream(ZeroCopyInputStream* input, int size) {
    Clear();
    return MergePartialFromBoundedZeroCopyStream(input, size);
  }
  bool MergeFromString(const ::std::string& data) {
    return MergeFromBytes(data) && HasAllRequired();
  }
  bool ParseFromString(const ::std::string& data) {
    Clear();
    return MergeFromString(data);
  }
  bool ParsePartialFromString(const ::std::string& data) {
    Clear();
    return MergeFromBytes(data);
  }
  bool ParseFromArray(const void* data, int size) {
    return ParsePartialFromArray(data, size) && HasAllRequired();
  }
  bool ParsePartialFromArray(const void* data, int size) {
    Clear();
    return MergeFromBytes(data, size);
  }
  bool ParseFromIstream(::std::istream* input) {
    ::google::protobuf::io::IstreamInputStream stream(input);
    return ParseFromZeroCopyStream(&stream) && input->eof();
  }
  bool ParsePartialFromIstream(::std::istream* input) {
    ::google::protobuf::io::IstreamInputStream stream(input);
    return ParsePartialFromZeroCopyStream(&stream) && input->eof();
  }
  bool ParseFromFileDescriptor(int file_descriptor) {
    ::google::protobuf::io::FileInputStream stream(file_descriptor);
    return ParseFromZeroCopyStream(&stream) && stream.GetErrno() == 0;
  }
  bool ParsePartialFromFileDescriptor(int file_descriptor) {
    ::google::protobuf::io::FileInputStream stream(file_descriptor);
    return ParsePartialFromZeroCopyStream(&stream) && stream.GetErrno() == 0;
  }

  bool SerializeToCodedStream(CodedOutputStream* output) const {
    CheckInitialized();
    return SerializePartialToCodedStream(output);
  }
  bool SerializePartialToCodedStream(CodedOutputStream* output) const {
    const int size = ByteSize();
    if (!SizeFits(size)) return false;
    uint8* buffer = output->GetDirectBufferForNBytesAndAdvance(size);
    if (buffer != nullptr) {
      CheckWritten(SerializeWithCachedSizesToArray(buffer) - buffer, size);
      return true;
    }
    const int start = output->ByteCount();
    SerializeWithCachedSizes(output);
    if (output->HadError()) return false;
    CheckWritten(output->ByteCount() - start, size);
    return true;
  }
  bool SerializeToZeroCopyStream(ZeroCopyOutputStream* output) const {
    CheckInitialized();
    return SerializePartialToZeroCopyStream(output);
  }
  bool SerializePartialToZeroCopyStream(ZeroCopyOutputStream* output) const {
    CodedOutputStream encoder(output);
    if (!SerializePartialToCodedStream(&encoder)) return false;
    encoder.Trim();
    return !encoder.HadError();
  }
  bool AppendToString(::std::string* output) const {
    CheckInitialized();
    return AppendPartialToString(output);
  }
  bool AppendPartialToString(::std::string* output) const {
    const int size = ByteSize();
    if (!SizeFits(size)) return false;
    const size_t old_size = output->size();
    output->resize(old_size + static_cast<size_t>(size));
    uint8* start = reinterpret_cast<uint8*>(&(*output)[0]) + old_size;
    CheckWritten(SerializeWithCachedSizesToArray(start) - start, size);
    return true;
  }
  bool SerializeToString(::std::string* output) const {
    output->clear();
    return AppendToString(output);
  }
  bool SerializePartialToString(::std::string* output) const {
    output->clear();
    return AppendPartialToString(output);
  }
  ::std::string SerializeAsString() const {
    ::std::string output;
    if (!AppendToString(&output)) output.clear();
    return output;
  }
  ::std::string SerializePartialAsString() const {
    ::std::string output;
    if (!AppendPartialToString(&output)) output.clear();
    return output;
  }
  bool SerializeToArray(void* data, int size) const {
    CheckInitialized();
    return SerializePartialToArray(data, size);
  }
  bool SerializePartialToArray(void* data, int size) const {
    const int needed = ByteSize();
    if (!SizeFits(needed) || size < needed) return false;
    uint8* start = static_cast<uint8*>(data);
    CheckWritten(SerializeWithCachedSizesToArray(start) - start, needed);
    return true;
  }
  bool SerializeToOstream(::std::ostream* output) const {
    CheckInitialized();
    return SerializePartialToOstream(output);
  }
  bool SerializePartialToOstream(::std::ostream* output) const {
    const int size = ByteSize();
    if (static_cast<size_t>(size) <= kFlatSize) {
      const ::std::unique_ptr<uint8[]> flat(new uint8[static_cast<unsigned>(size)]);
      CheckWritten(SerializeWithCachedSizesToArray(flat.get()) - flat.get(), size);
      output->write(reinterpret_cast<const char*>(flat.get()), size);
      return output->good();
    }
    {
      ::google::protobuf::io::OstreamOutputStream stream(output);
      if (!SerializePartialToZeroCopyStream(&stream)) return false;
    }
    return output->good();
  }
  bool SerializeToFileDescriptor(int file_descriptor) const {
    CheckInitialized();
    return SerializePartialToFileDescriptor(file_descriptor);
  }
  bool SerializePartialToFileDescriptor(int file_descriptor) const {
    ::google::protobuf::io::FileOutputStream stream(file_descriptor);
    return SerializePartialToZeroCopyStream(&stream) && stream.Flush();
  }

 protected:
  ZARVO_CALIBRATION_RECORD_CLASS_DATA

 private:
  enum { kFlatSize = 1 << 16 };  // up to so many bytes are written to a std::ostream at once

  // Both merge the rest of the message; null if it is malformed.
  const char* MergeFromBlock(const char* ptr, int size, ParseContext* context);
  const char* MergeFieldByField(const char* ptr, ParseContext* context);

  bool MergeFromBytes(const ::std::string& data) {
    return data.size() <= static_cast<size_t>(INT_MAX) &&
           MergeFromBytes(data.data(), static_cast<int>(data.size()));
  }
  bool MergeFromBytes(const void* data, int size) {
    if (size < 0) return false;
    CodedInputStream input(static_cast<const uint8*>(data), size);
    return MergePartialFromCodedStream(&input) && input.ConsumedEntireMessage();
  }

  // Not the run-time's own call for it, which most releases keep to themselves.
  bool HasAllRequired() const { return IsInitialized() || ReportMissing(); }
  __attribute__((noinline)) bool ReportMissing() const {
    GOOGLE_LOG(ERROR) << "Can't parse message of type \"" << GetTypeName()
                      << "\" because it is missing required fields: "
                      << InitializationErrorString();
    return false;
  }

  // Ends the process or throws, as the run-time's own calls do. Not a check of the program's debug
  // builds alone: what is compiled into programs does not depend on how they are compiled.
  void CheckInitialized() const {
    GOOGLE_CHECK(IsInitialized()) << "Can't serialize message of type \"" << GetTypeName()
                                  << "\" because it is missing required fields: "
                                  << InitializationErrorString();
  }
  bool SizeFits(int size) const {
    if (size >= 0) return true;
    GOOGLE_LOG(ERROR) << GetTypeName() << " exceeded maximum protobuf size of 2GB";
    return false;
  }
  void CheckWritten(::std::ptrdiff_t written, int size) const {
    GOOGLE_CHECK_EQ(written, size) << GetTypeName() << " was modified while it was serialized.";
  }
};

#ifdef __clang__
#pragma clang diagnostic pop
#endif

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_RECORD_3_10_H_
