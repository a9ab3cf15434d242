// Which camera of one record is which of another. Their order in a record means nothing, so that
// names and serial numbers tell.
#ifndef CALIB_FIELDS_CAMERA_MATCH_H_
#define CALIB_FIELDS_CAMERA_MATCH_H_

#include <google/protobuf/message.h>

#include <map>
#include <string>
#include <vector>

namespace calib {

// By what cameras are matched. kAuto: by a name that no other camera has on either side; those that
// are left in the same way by their serial number, and those that are left then by their index.
enum class MatchBy { kAuto, kIndex, kName, kSerial };

class CameraMatch {
 public:
  // Throws Failure if cameras are to be matched by a name or a serial number that several have.
  CameraMatch(const google::protobuf::Message& before, const google::protobuf::Message& after,
              MatchBy by);

  // Whether a comparison by indices compares the same cameras.
  bool is_by_index() const { return is_by_index_; }
  // Whether elements of the two records are the same camera.
  bool AreSame(const google::protobuf::Message& before,
               const google::protobuf::Message& after) const;

  // The camera of `after` that is this one of `before`; nullptr if none is, or if it is in no such
  // list.
  const google::protobuf::Message* AfterOf(const google::protobuf::Message& before) const;
  // Whether both records have lists of cameras, which are matched.
  bool matches() const { return matches_; }

  // Whether a camera has another index in the other record.
  bool moved() const;
  // How it was done: "cameras are matched by name"; "" if there are none to match.
  std::string Told() const;

 private:
  struct Pair {
    std::string before_path, after_path;
    const char* by;
  };

  std::vector<Pair> pairs_;
  std::map<const google::protobuf::Message*, const google::protobuf::Message*> after_of_;
  bool matches_ = false, is_by_index_ = true;
};

// Puts the cameras of `before` in the order of those of `after`, for what compares them by their
// indices. Returns how they were matched; "" if they stay where they are: they have that order, or
// not each has a partner.
std::string OrderCamerasLike(const google::protobuf::Message& after,
                             google::protobuf::Message* before);

}  // namespace calib

#endif  // CALIB_FIELDS_CAMERA_MATCH_H_
