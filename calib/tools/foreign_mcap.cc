#include "calib/tools/foreign_mcap.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "calib/console/failure.h"
#include "calib/console/number.h"
#include "calib/console/printable.h"
#include "calib/tools/foxglove_schema.h"
#include "calib/tools/mcap_reader.h"
#include "calib/tools/ros_camera_info.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

constexpr char kExpected[] = "foxglove.CameraCalibration or sensor_msgs/CameraInfo";

enum class Kind { kFoxgloveCamera, kRosCamera, kTransforms, kOther };

Kind KindOf(const McapChannel& channel) {
  if (channel.encoding == "protobuf") {
    if (channel.schema == "foxglove.CameraCalibration") return Kind::kFoxgloveCamera;
    if (channel.schema == "foxglove.FrameTransform") return Kind::kTransforms;
    if (channel.schema == "foxglove.FrameTransforms") return Kind::kTransforms;
  }
  const bool camera_info =
      channel.schema == "sensor_msgs/CameraInfo" || channel.schema == "sensor_msgs/msg/CameraInfo";
  const bool ros = channel.encoding == "cdr" || channel.encoding == "ros1";
  return camera_info && ros ? Kind::kRosCamera : Kind::kOther;
}

bool IsCamera(Kind kind) { return kind == Kind::kFoxgloveCamera || kind == Kind::kRosCamera; }

// --- What messages hold ------------------------------------------------------------------------

// Writes the values of a message into the tree, each with its key.
class TreeWriter {
 public:
  explicit TreeWriter(ForeignTree* tree) : tree_(tree) {}

  void Text(const std::string& key, const std::string& text) {
    tree_->SetText(Add(key), Printable(text));
  }
  void Number(const std::string& key, double number) { tree_->SetText(Add(key), Shortest(number)); }
  void Numbers(const std::string& key, const std::vector<double>& numbers) {
    In(key, ForeignTree::Kind::kList, [&] {
      for (const double number : numbers) Number("", number);
    });
  }

  // A list or a map whose items `write` adds.
  template <typename Write>
  void In(const std::string& key, ForeignTree::Kind kind, Write write) {
    const ForeignTree::Index value = Add(key);
    const uint32_t before = std::exchange(items_, 0);
    write();
    tree_->Close(value, kind, std::exchange(items_, before));
  }

  // The fields of a message, each with its value or that of none.
  void Fields(const Message& message) {
    const Reflection& values = *message.GetReflection();
    for (int i = 0; i < message.GetDescriptor()->field_count(); ++i) {
      const FieldDescriptor* field = message.GetDescriptor()->field(i);
      const std::string& key = field->name();
      if (field->is_repeated()) {
        std::vector<double> numbers;
        numbers.reserve(static_cast<size_t>(values.FieldSize(message, field)));
        for (int n = 0; n < values.FieldSize(message, field); ++n) {
          numbers.push_back(values.GetRepeatedDouble(message, field, n));
        }
        Numbers(key, numbers);
      } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
        if (key == "timestamp") continue;
        In(key, ForeignTree::Kind::kMap, [&] { Fields(values.GetMessage(message, field)); });
      } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
        Text(key, values.GetString(message, field));
      } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_UINT32) {
        Number(key, values.GetUInt32(message, field));
      } else {
        Number(key, values.GetDouble(message, field));
      }
    }
  }

  void Fields(const RosCameraInfo& info) {
    Text("frame_id", info.frame_id);
    Number("height", info.height);
    Number("width", info.width);
    Text("distortion_model", info.distortion_model);
    Numbers("D", info.d);
    Numbers("K", info.k);
    Numbers("R", info.r);
    Numbers("P", info.p);
    Number("binning_x", info.binning_x);
    Number("binning_y", info.binning_y);
    In("roi", ForeignTree::Kind::kMap, [&] {
      Number("x_offset", info.roi_x_offset);
      Number("y_offset", info.roi_y_offset);
      Number("height", info.roi_height);
      Number("width", info.roi_width);
      Text("do_rectify", info.roi_do_rectify ? "true" : "false");
    });
  }

 private:
  ForeignTree::Index Add(const std::string& key) {
    ++items_;
    const ForeignTree::Index value = tree_->Add(-1, -1);
    if (!key.empty()) tree_->SetKey(value, key);
    return value;
  }

  ForeignTree* tree_;
  uint32_t items_ = 0;
};

// --- Topics ------------------------------------------------------------------------------------

// How many messages there were, and how many said anything else than the one before.
struct Changes {
  size_t messages = 0, changes = 0;
};

// From one frame to another.
struct Transform {
  std::unique_ptr<Message> last;  // without its time
  Changes changes;
};

struct Topic {
  std::string name;
  McapChannel channel;  // of the last message
  Kind kind;
  std::string message;                                                  // the last one of a camera
  Changes changes;                                                      // of it
  std::map<std::pair<std::string, std::string>, Transform> transforms;  // by parent and child
  size_t unread = 0;  // transforms, or messages of them
};

// As messages and paths have it.
std::string ShownName(const std::string& topic) { return topic.empty() ? "''" : Printable(topic); }

// The parts of a message that are of interest: not its time, by which all of them differ.
std::string WithoutTime(Kind kind, const McapChannel& channel, std::string_view bytes) {
  std::string message(bytes);
  if (kind == Kind::kRosCamera) {
    // Four bytes ahead of the time, and eight of it.
    for (size_t i = channel.encoding == "cdr" ? 4 : 0; i < 12 && i < message.size(); ++i) {
      message[i] = 0;
    }
    return message;
  }
  const std::unique_ptr<Message> parsed = NewFoxgloveMessage(channel.schema);
  if (!ParseFoxgloveMessage(message, parsed.get())) return message;
  parsed->GetReflection()->ClearField(parsed.get(),
                                      parsed->GetDescriptor()->FindFieldByName("timestamp"));
  parsed->DiscardUnknownFields();
  return parsed->SerializeAsString();
}

class Topics {
 public:
  Topics(const std::string& file, const std::vector<std::string>& wanted)
      : file_(file), wanted_(wanted) {}

  const std::vector<Topic>& all() const { return topics_; }

  void Take(const McapChannel& channel, std::string_view message) {
    const Kind kind = KindOf(channel);
    const std::string name = ShownName(channel.topic);
    const bool wanted = wanted_.empty() ||
                        std::find(wanted_.begin(), wanted_.end(), channel.topic) != wanted_.end();
    if (!wanted && kind != Kind::kTransforms) return;
    const auto [place, is_new] = places_.emplace(name, topics_.size());
    if (is_new) {
      Keep(name.size() + channel.schema.size() + channel.encoding.size(), 0);
      topics_.push_back({name, channel, kind, "", {}, {}, 0});
    }
    Topic& topic = topics_[place->second];
    if (IsCamera(topic.kind) && !IsCamera(kind)) return;
    if (IsCamera(kind) && message.size() > kLargestKeptOfMcap) {
      throw Failure(file_ + ": " + topic.name + ": has a message of " +
                        std::to_string(message.size()) + " bytes, but no " + channel.schema +
                        " has more than " + std::to_string(kLargestKeptOfMcap),
                    "Name the topic of another camera with --topic.");
    }
    if (topic.kind != kind) topic.transforms.clear();
    topic.kind = kind;
    topic.channel = channel;
    if (IsCamera(kind)) TakeCamera(message, &topic);
    if (kind == Kind::kTransforms) TakeTransforms(message, &topic);
  }

 private:
  void Keep(size_t added, size_t removed) {
    kept_ += added;
    kept_ -= removed;
    if (kept_ <= kMostKeptOfMcap) return;
    throw Failure(file_ + ": its cameras, transforms and topics take more than " +
                      std::to_string(kMostKeptOfMcap) + " bytes",
                  "Make a file of those that are wanted.");
  }

  void TakeCamera(std::string_view bytes, Topic* topic) {
    std::string message = WithoutTime(topic->kind, topic->channel, bytes);
    Count(message != topic->message, &topic->changes);
    Keep(message.size(), topic->message.size());
    topic->message = std::move(message);
  }

  static void Count(bool differs, Changes* changes) {
    if (changes->messages > 0 && differs) ++changes->changes;
    ++changes->messages;
  }

  // What cannot be read is counted, and no reason to do without the cameras: most transforms of a
  // recording are not theirs.
  void TakeTransforms(std::string_view bytes, Topic* topic) {
    const std::unique_ptr<Message> message = NewFoxgloveMessage(topic->channel.schema);
    if (bytes.size() > kLargestKeptOfMcap || !ParseFoxgloveMessage(bytes, message.get())) {
      ++topic->unread;
      return;
    }
    const Reflection& values = *message->GetReflection();
    const FieldDescriptor* list = message->GetDescriptor()->FindFieldByName("transforms");
    if (list == nullptr) return TakeTransform(message.get(), topic);
    for (int i = 0; i < values.FieldSize(*message, list); ++i) {
      TakeTransform(values.MutableRepeatedMessage(message.get(), list, i), topic);
    }
  }

  void TakeTransform(Message* message, Topic* topic) {
    const Reflection& values = *message->GetReflection();
    const auto field = [&](const char* name) {
      return message->GetDescriptor()->FindFieldByName(name);
    };
    values.ClearField(message, field("timestamp"));
    message->DiscardUnknownFields();
    const auto key = std::make_pair(values.GetString(*message, field("parent_frame_id")),
                                    values.GetString(*message, field("child_frame_id")));
    auto place = topic->transforms.find(key);
    if (place == topic->transforms.end()) {
      // An object of it takes about so much beside its names.
      const size_t room = 1024 + 4 * (key.first.size() + key.second.size());
      if (kept_ + room > kMostKeptOfTransforms) {
        ++topic->unread;
        return;
      }
      Keep(room, 0);
      place = topic->transforms.emplace(key, Transform()).first;
      place->second.last.reset(message->New());
    }
    Transform& transform = place->second;
    Count(message->SerializeAsString() != transform.last->SerializeAsString(), &transform.changes);
    transform.last->CopyFrom(*message);
  }

  const std::string& file_;
  const std::vector<std::string>& wanted_;
  std::vector<Topic> topics_;
  std::map<std::string, size_t> places_;  // in topics_, by name
  size_t kept_ = 0;
};

void WriteCamera(const std::string& file, const Topic& topic, TreeWriter* writer) {
  const auto refuse = [&](const std::string& why) {
    throw Failure(file + ": " + topic.name + ": is no " + topic.channel.schema + ": " + why,
                  "Name the topic of another camera with --topic.");
  };
  if (topic.kind == Kind::kRosCamera) {
    RosCameraInfo info;
    const std::string why = ReadRosCameraInfo(topic.message, topic.channel.encoding, &info);
    if (!why.empty()) refuse(why);
    return writer->Fields(info);
  }
  const std::unique_ptr<Message> message = NewFoxgloveMessage(topic.channel.schema);
  if (!ParseFoxgloveMessage(topic.message, message.get())) {
    refuse("its " + std::to_string(topic.message.size()) + " bytes are no message of protobuf");
  }
  writer->Fields(*message);
}

ForeignTree TreeOf(const std::string& file, const std::vector<Topic>& topics) {
  using TreeKind = ForeignTree::Kind;
  ForeignTree tree;
  TreeWriter writer(&tree);
  writer.In("", TreeKind::kMap, [&] {
    for (const Topic& topic : topics) {
      if (IsCamera(topic.kind)) {
        writer.In(topic.name, TreeKind::kMap, [&] { WriteCamera(file, topic, &writer); });
      } else if (topic.kind == Kind::kTransforms) {
        writer.In(topic.name, TreeKind::kList, [&] {
          for (const auto& transform : topic.transforms) {
            writer.In("", TreeKind::kMap, [&] { writer.Fields(*transform.second.last); });
          }
        });
      } else {
        writer.Text(topic.name, topic.channel.schema);
      }
    }
  });
  return tree;
}

// --- The file ------------------------------------------------------------------------------------

std::string MessagesText(size_t messages) {
  return std::to_string(messages) + (messages == 1 ? " message" : " messages");
}

std::string Damage(const McapEnd& end) {
  return "is damaged at byte " + std::to_string(end.at) + ": " + end.damage;
}

void CheckWanted(const std::string& file, const std::vector<Topic>& topics,
                 const std::vector<std::string>& wanted, const McapEnd& end) {
  const auto refuse = [&](const std::string& what, const std::string& remedy) {
    std::string damage;
    if (!end.damage.empty()) damage = Damage(end) + ", and ahead of it ";
    throw Failure(file + ": " + damage + what,
                  end.damage.empty()
                      ? remedy
                      : "A tool that recovers MCAP files may find more, behind the damage.");
  };
  for (const std::string& name : wanted) {
    const auto topic = std::find_if(topics.begin(), topics.end(), [&](const Topic& candidate) {
      return candidate.name == ShownName(name);
    });
    if (topic == topics.end()) {
      refuse("has no message on the topic " + ShownName(name),
             "Without --topic, all cameras are imported.");
    } else if (!IsCamera(topic->kind)) {
      refuse("has on the topic " + topic->name + " " + Printable(topic->channel.schema) + " in " +
                 Printable(topic->channel.encoding) + ", expected " + kExpected,
             "Without --topic, all cameras are imported.");
    }
  }
  if (std::none_of(topics.begin(), topics.end(),
                   [](const Topic& topic) { return IsCamera(topic.kind); })) {
    refuse(std::string("has no message of ") + kExpected + " among " + std::to_string(end.messages),
           "Record the topics of the cameras' calibrations, too.");
  }
}

// Tells that not all messages said the same.
void TellChanges(const Changes& changes, const Foreign& value) {
  if (changes.changes == 0) return;
  value.Convert(std::to_string(changes.changes) + " of " + MessagesText(changes.messages) +
                (changes.changes == 1 ? " differs" : " differ") +
                " from the one before; the last is kept");
}

// Of the transforms of cameras, that is; others move all the time, and are not kept.
void TellTransforms(const Topic& topic, const std::set<std::string>& frames,
                    const Foreign& cameras) {
  const Foreign value = cameras.At({topic.name});
  if (topic.unread > 0) {
    value.Remark(std::to_string(topic.unread) +
                     (topic.unread == 1 ? " transform or message of them is"
                                        : " transforms or messages of them are") +
                     " damaged, or too large, or too many, and not read",
                 Leftover::Kind::kDamaged);
  }
  const std::vector<Foreign> elements = value.Elements();
  size_t i = 0;
  for (const auto& [names, transform] : topic.transforms) {
    const Foreign& element = elements[i++];
    if (frames.count(Printable(names.second)) != 0) TellChanges(transform.changes, element);
  }
}

}  // namespace

Foreign ReadMcapCameras(const std::string& file, std::string_view bytes,
                        const std::vector<std::string>& topics) {
  Topics taken(file, topics);
  const McapEnd end = ReadMcap(bytes, [&](const McapChannel& channel, std::string_view message) {
    taken.Take(channel, message);
  });
  CheckWanted(file, taken.all(), topics, end);
  Foreign cameras = Foreign::FromMcap(file, TreeOf(file, taken.all()));
  if (!end.damage.empty()) {
    cameras.Remark(
        Damage(end) + "; read is what stands ahead of it, in " + MessagesText(end.messages),
        Leftover::Kind::kDamaged);
  }
  std::set<std::string> frames;
  for (const Topic& topic : taken.all()) {
    if (!IsCamera(topic.kind)) continue;
    const Foreign camera = cameras.At({topic.name});
    TellChanges(topic.changes, camera);
    frames.insert(camera.At({"frame_id"}).Peek());
  }
  for (const Topic& topic : taken.all()) {
    if (topic.kind == Kind::kTransforms) TellTransforms(topic, frames, cameras);
  }
  return cameras;
}

}  // namespace calib
