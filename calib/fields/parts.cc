#include "calib/fields/parts.h"

#include <algorithm>

#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/fields/walk.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::Message;

namespace {

// Whether the path has the element, such as "camera[0]".
bool LeadsThrough(const std::string& path, const std::string& element) {
  return ("." + path + ".").find("." + element + ".") != std::string::npos;
}

}  // namespace

void CameraFlag::AddTo(Command* command) {
  command->AddOption("--camera", number, "Only camera[N]; they count from 0")
      ->Check(CountFromZero())
      ->ValueName("N");
}

std::vector<Part> CameraFlag::Choose(const Message& record, const std::string& name,
                                     const std::vector<const Descriptor*>& types) const {
  const std::string element = "camera[" + std::to_string(number) + "]";
  std::vector<Part> parts;
  bool found = number < 0;
  ForEachMessage(record, [&](const Message& message, const std::string& path) {
    if (number >= 0 && !LeadsThrough(path, element)) return;
    found = true;
    const bool wanted =
        std::find(types.begin(), types.end(), message.GetDescriptor()) != types.end();
    if (wanted) parts.push_back({&message, path});
  });
  if (!found) {
    throw Failure(name + ": has no " + element,
                  "'calib show' shows its cameras; leave --camera out if there are none.");
  }
  return parts;
}

}  // namespace calib
