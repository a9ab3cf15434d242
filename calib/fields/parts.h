// The parts of a record that a command works on, and --camera, which names one of them.
#ifndef CALIB_FIELDS_PARTS_H_
#define CALIB_FIELDS_PARTS_H_

#include <google/protobuf/message.h>

#include <string>
#include <vector>

#include "calib/console/command_line.h"

namespace calib {

struct Part {
  const google::protobuf::Message* message;
  std::string path;  // "" for the record itself
};

struct CameraFlag {
  std::string camera;  // an index or a name; "" for all

  void AddTo(Command* command);

  // All messages of a record that are of one of the types, in the record's order; with --camera
  // only those in or below that camera. Throws Failure if there is no such camera, or several of
  // that name; `name` is what messages call the file.
  std::vector<Part> Choose(const google::protobuf::Message& record, const std::string& name,
                           const std::vector<const google::protobuf::Descriptor*>& types) const;
};

}  // namespace calib

#endif  // CALIB_FIELDS_PARTS_H_
