// MCAP files: every encoding and compression gives the same camera; what is cut off or changed is
// told or refused, wherever it is; and what is written for viewers comes back.
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>
#include <lz4frame.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "calib/console/failure.h"
#include "calib/tools/exporters.h"
#include "calib/tools/foreign_mcap.h"
#include "calib/tools/foxglove_schema.h"
#include "calib/tools/importers.h"
#include "calib/tools/mcap_chunk.h"
#include "calib/tools/mcap_reader.h"
#include "calib/tools/mcap_records.h"
#include "calib/tools/mcap_writer.h"

namespace calib {
namespace {

using google::protobuf::Message;
using google::protobuf::TextFormat;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::RobotCalibration;

// --- Files, by hand ------------------------------------------------------------------------------

template <typename Number>
std::string Int(uint64_t value) {
  std::string bytes;
  for (size_t i = 0; i < sizeof(Number); ++i) bytes += static_cast<char>(value >> 8 * i & 255);
  return bytes;
}
std::string Sized(const std::string& text) { return Int<uint32_t>(text.size()) + text; }
std::string Record(int kind, const std::string& content) {
  return static_cast<char>(kind) + Int<uint64_t>(content.size()) + content;
}
std::string Checksum(const std::string& bytes) {
  return Int<uint32_t>(
      crc32_z(0, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
}

std::string Schema(int id, const std::string& name) {
  return Record(3, Int<uint16_t>(id) + Sized(name) + Sized("") + Sized(""));
}
std::string Channel(int id, const std::string& topic, const std::string& encoding) {
  return Record(4,
                Int<uint16_t>(id) + Int<uint16_t>(id) + Sized(topic) + Sized(encoding) + Sized(""));
}
std::string MessageOn(int id, const std::string& bytes) {
  return Record(5, Int<uint16_t>(id) + std::string(20, '\0') + bytes);
}

std::string Compressed(const std::string& compression, const std::string& records) {
  std::string bytes = records;
  if (compression == "zstd") {
    bytes.resize(ZSTD_compressBound(records.size()));
    bytes.resize(ZSTD_compress(&bytes[0], bytes.size(), records.data(), records.size(), 1));
  } else if (compression == "lz4") {
    bytes.resize(LZ4F_compressFrameBound(records.size(), nullptr));
    bytes.resize(
        LZ4F_compressFrame(&bytes[0], bytes.size(), records.data(), records.size(), nullptr));
  }
  return bytes;
}

std::string Chunk(const std::string& compression, const std::string& records, uint64_t size,
                  const std::string& checksum) {
  const std::string bytes = Compressed(compression, records);
  return Record(6, std::string(16, '\0') + Int<uint64_t>(size) + checksum + Sized(compression) +
                       Int<uint64_t>(bytes.size()) + bytes);
}
std::string Chunk(const std::string& compression, const std::string& records) {
  return Chunk(compression, records, records.size(), Checksum(records));
}

// With all checksums that there may be.
std::string File(const std::string& records) {
  std::string file = std::string(kMcapMagic) + Record(1, Sized("") + Sized("test")) + records;
  file += Record(15, Checksum(file));
  const std::string footer = '\x02' + Int<uint64_t>(20) + std::string(16, '\0');
  return file + footer + Checksum(footer) + std::string(kMcapMagic);
}

// --- Messages, by hand ---------------------------------------------------------------------------

// sensor_msgs/CameraInfo: CDR with the low or the high byte first, or ROS 1.
class CameraInfo {
 public:
  enum class Form { kRos1, kCdr, kCdrHighFirst };

  CameraInfo(Form form, double fx) : form_(form) {
    if (form == Form::kRos1) Put(uint32_t{7});
    Put(uint32_t{1700000000});
    Put(uint32_t{5});
    Put("left_optical");
    Put(uint32_t{480});
    Put(uint32_t{640});
    Put("plumb_bob");
    Put(uint32_t{5});
    for (const double d : {-0.25, 0.125, 0.5, 0.0625, 0.75}) Put(d);
    for (const double k : {fx, 0.0, 320.5, 0.0, 401.0, 240.5, 0.0, 0.0, 1.0}) Put(k);
    for (const double r : {1, 0, 0, 0, 1, 0, 0, 0, 1}) Put(r);
    for (const double p : {400, 0, 320, 0, 0, 401, 240, 0, 0, 0, 1, 0}) Put(p);
    for (const uint32_t number : {2, 2, 16, 8, 480, 640}) Put(number);
    bytes_ += '\1';
  }

  std::string bytes() const {
    if (form_ == Form::kRos1) return bytes_;
    return std::string{0, static_cast<char>(form_ == Form::kCdr ? 1 : 0), 0, 0} + bytes_;
  }

 private:
  template <typename Number>
  void Put(Number number) {
    if (form_ != Form::kRos1)
      bytes_.resize((bytes_.size() + sizeof number - 1) / sizeof number * sizeof number);
    std::string text(reinterpret_cast<const char*>(&number), sizeof number);
    if (form_ == Form::kCdrHighFirst) std::reverse(text.begin(), text.end());
    bytes_ += text;
  }
  void Put(const char* text) {
    const std::string all = text + std::string(form_ == Form::kRos1 ? 0 : 1, '\0');
    Put(static_cast<uint32_t>(all.size()));
    bytes_ += all;
  }

  Form form_;
  std::string bytes_;
};

std::string Foxglove(const std::string& type, const std::string& text) {
  const std::unique_ptr<Message> message = NewFoxgloveMessage("foxglove." + type);
  EXPECT_TRUE(TextFormat::ParseFromString(text, message.get())) << text;
  return message->SerializeAsString();
}

constexpr char kFoxglove[] =
    "frame_id: 'left_optical' width: 640 height: 480 distortion_model: 'plumb_bob' "
    "D: [-0.25, 0.125, 0.5, 0.0625, 0.75] K: [400, 0, 320.5, 0, 401, 240.5, 0, 0, 1] ";

struct Encoding {
  const char *schema, *encoding;
  std::string message, other;  // of fx 400, and of another one
};

std::vector<Encoding> Encodings() {
  using Form = CameraInfo::Form;
  const auto info = [](const char* schema, const char* encoding, Form form) {
    return Encoding{schema, encoding, CameraInfo(form, 400).bytes(), CameraInfo(form, 410).bytes()};
  };
  return {{"foxglove.CameraCalibration", "protobuf", Foxglove("CameraCalibration", kFoxglove),
           Foxglove("CameraCalibration", kFoxglove) + Foxglove("CameraCalibration", "width: 639")},
          info("sensor_msgs/CameraInfo", "ros1", Form::kRos1),
          info("sensor_msgs/msg/CameraInfo", "cdr", Form::kCdr),
          info("sensor_msgs/msg/CameraInfo", "cdr", Form::kCdrHighFirst)};
}

std::string Declared(const Encoding& encoding) {
  return Schema(1, encoding.schema) + Channel(1, "/left/camera_info", encoding.encoding);
}

// --- Reading -------------------------------------------------------------------------------------

struct Read {
  RobotCalibration robot;
  std::string refusal, damage, notes;
};

Read ReadFile(const std::string& file, const std::vector<std::string>& topics = {}) {
  Read read;
  try {
    const Foreign foreign = ReadMcapCameras("file", file, topics);
    ImportMcap(foreign, nullptr, &read.robot);
    foreign.ForEachLeftover([&](const Leftover& leftover) {
      (leftover.kind == Leftover::Kind::kDamaged ? read.damage : read.notes) +=
          leftover.place + leftover.what + "\n";
    });
  } catch (const Failure& failure) {
    read.refusal = failure.what();
    EXPECT_EQ(read.refusal.compare(0, 6, "file: "), 0) << read.refusal;
  }
  return read;
}

constexpr char kCamera[] =
    "intrinsics { fx: 400 fy: 401 skew: 0 cx: 320.5 cy: 240.5 k: [-0.25, 0.125, 0.75] "
    "p: [0.5, 0.0625] width: 640 height: 480 } name: 'left'";

TEST(McapTest, ReadsEachEncodingInEachCompression) {
  CameraCalibration expected;
  ASSERT_TRUE(TextFormat::ParseFromString(kCamera, &expected));
  for (const Encoding& encoding : Encodings()) {
    const std::string records = Declared(encoding) + MessageOn(1, encoding.message);
    for (const std::string& file :
         {File(records), File(Chunk("", records)), File(Chunk("zstd", records)),
          File(Chunk("lz4", records)),
          File(Declared(encoding) + Chunk("lz4", MessageOn(1, encoding.message)))}) {
      const Read read = ReadFile(file);
      ASSERT_EQ(read.refusal + read.damage, "") << encoding.schema;
      ASSERT_EQ(read.robot.camera_size(), 1);
      CameraCalibration camera = read.robot.camera(0);
      if (encoding.encoding != std::string("protobuf")) {
        EXPECT_EQ(camera.intrinsics().offset_x(), 16);
        EXPECT_EQ(camera.intrinsics().offset_y(), 8);
        EXPECT_EQ(camera.intrinsics().x_bin(), "2");
        camera.mutable_intrinsics()->clear_offset_x();
        camera.mutable_intrinsics()->clear_offset_y();
        camera.mutable_intrinsics()->clear_x_bin();
      }
      EXPECT_EQ(camera.DebugString(), expected.DebugString()) << encoding.schema;
    }
  }
}

// Whatever is cut off or changed: it is refused, or told beside what could be read.
TEST(McapTest, TellsEachDamage) {
  for (const Encoding& encoding : {Encodings()[0], Encodings()[3]}) {
    for (const char* compression : {"", "zstd", "lz4"}) {
      const std::string file = File(Declared(encoding) + MessageOn(1, encoding.message) +
                                    Chunk(compression, MessageOn(1, encoding.other)));
      for (size_t i = kMcapMagic.size(); i < file.size(); ++i) {
        const Read cut = ReadFile(file.substr(0, i));
        EXPECT_NE(cut.refusal + cut.damage, "") << "cut off at " << i;
        EXPECT_EQ(cut.robot.camera_size(), cut.refusal.empty() ? 1 : 0) << i;
        std::string changed = file;
        changed[i] = static_cast<char>(changed[i] ^ 1 << i % 8);
        const Read read = ReadFile(changed);
        EXPECT_NE(read.refusal + read.damage, "") << "changed at " << i;
      }
      EXPECT_EQ(ReadFile(file).damage, "");
      EXPECT_NE(ReadFile(file + "x").damage, "") << "more behind the end";
    }
  }
  EXPECT_FALSE(BeginsAsMcap(kMcapMagic.substr(1)));
  EXPECT_FALSE(BeginsAsMcap(kMcapMagic.substr(0, 7)));
}

TEST(McapTest, KeepsWhatStandsAheadOfTheDamage) {
  const Encoding encoding = Encodings()[0];
  const std::string good = Declared(encoding) + MessageOn(1, encoding.message);
  const std::string other = MessageOn(1, encoding.other);
  const std::string zeros(size_t{1} << 20, '\0');
  const struct {
    std::string records;
    const char* damage;  // a part of it
  } cases[] = {
      {Chunk("zstd", other, other.size(), "oops"), "its chunk does not have the checksum"},
      {Chunk("zstd", other, other.size() + 1, "oops"), "its chunk becomes only"},
      {Chunk("lz4", zeros, 1000, "oops"), "its chunk becomes more bytes, but says 1000"},
      {Chunk("zstd", zeros, 0, "oops"), "its chunk becomes more bytes, but says 0"},
      {Chunk("zstd", zeros, uint64_t{1} << 40, "oops"), "more than the 9437184 that are read"},
      {Chunk("zstd", zeros, LargestMcapChunk(0) + 1, "oops"), "more than the 9437184 that are"},
      {Chunk("zstd", zeros, LargestMcapChunk(0), "oops"), "its chunk becomes only 1048576 bytes"},
      {Chunk("lz5", other), "its chunk is compressed by 'lz5', expected zstd or lz4"},
      {Record(6, std::string(16, '\0') + Int<uint64_t>(9) + Int<uint32_t>(0) + Sized("zstd") +
                     Int<uint64_t>(9) + "not zstd!"),
       "its chunk cannot be decompressed by zstd"},
      {Record(6, std::string(16, '\0') + Int<uint64_t>(9) + Int<uint32_t>(0) + Sized("lz4") +
                     Int<uint64_t>(9) + "it is not"),
       "its chunk cannot be decompressed by lz4"},
      {Chunk("", Chunk("", other)), "in its chunk, there is a record that belongs elsewhere"},
      {Chunk("", other.substr(0, 30)), "in its chunk, it ends within a record"},
      {MessageOn(2, encoding.message), "a message is of the channel 2, which is not there"},
      {Record(4, Int<uint16_t>(3) + Int<uint16_t>(9) + Sized("/a") + Sized("") + Sized("")),
       "a channel has the schema 9, which is not there"},
      {Record(5, "short"), "a message is too short"},
      {Record(4, Int<uint16_t>(1) + Int<uint16_t>(1) + Int<uint32_t>(-1)),
       "a channel is too short"},
      {Record(3, ""), "a schema is too short"},
      {Record(6, ""), "its chunk is too short"},
      {Schema(1, std::string(5000, 'a')), "a name of too many bytes"},
      {std::string(64, '\0'), "there is no record of the kind 0"},
  };
  for (const auto& given : cases) {
    const Read read = ReadFile(File(good + given.records + other));
    EXPECT_NE(read.damage.find("file: is damaged at byte "), std::string::npos) << given.damage;
    EXPECT_NE(read.damage.find(given.damage), std::string::npos) << read.damage << given.damage;
    EXPECT_NE(read.damage.find("in 1 message\n"), std::string::npos) << read.damage;
    ASSERT_EQ(read.robot.camera_size(), 1) << read.refusal;
    EXPECT_EQ(read.robot.camera(0).intrinsics().width(), 640) << "that of the first message";
  }
}

TEST(McapTest, IgnoresWhatItDoesNotKnow) {
  const Encoding encoding = Encodings()[0];
  const std::string file = File(Record(9, "an attachment") + Declared(encoding) +
                                Record(200, "someone's own") + MessageOn(1, encoding.message));
  EXPECT_EQ(ReadFile(file).damage + ReadFile(file).refusal, "");
  // Writers may leave out checksums.
  std::string bare = std::string(kMcapMagic) + Declared(encoding) + MessageOn(1, encoding.message) +
                     Record(15, std::string(4, '\0')) + Record(2, std::string(20, '\0')) +
                     std::string(kMcapMagic);
  EXPECT_EQ(ReadFile(bare).damage + ReadFile(bare).refusal, "");
}

TEST(McapTest, RefusesMessagesThatAreNone) {
  for (const Encoding& encoding : Encodings()) {
    // Of protobuf, the last field is the frame's name, without which the rest is a camera.
    const size_t whole =
        encoding.encoding == std::string("protobuf") ? 2 + strlen("left_optical") : 0;
    for (size_t size = 0; size < encoding.message.size(); ++size) {
      if (whole != 0 && size == encoding.message.size() - whole) continue;
      const std::string cut = encoding.message.substr(0, size);
      const Read read = ReadFile(File(Declared(encoding) + MessageOn(1, cut)));
      EXPECT_NE(read.refusal, "") << encoding.encoding << " of " << size << " bytes";
    }
    const Read longer =
        ReadFile(File(Declared(encoding) + MessageOn(1, encoding.message + std::string(9, '\1'))));
    EXPECT_NE(longer.refusal, "") << encoding.encoding;
  }
  std::string cdr = Encodings()[2].message;
  cdr[1] = 7;
  EXPECT_NE(
      ReadFile(File(Declared(Encodings()[2]) + MessageOn(1, cdr))).refusal.find("begins with 7"),
      std::string::npos);
}

TEST(McapTest, TellsWhatChangesAndTakesTheLast) {
  for (const Encoding& encoding : Encodings()) {
    // Messages that differ by their time alone are the same.
    std::string later = encoding.message;
    if (encoding.encoding == std::string("protobuf")) {
      later += Foxglove("CameraCalibration", "timestamp { seconds: 5 }");
    } else {
      later[encoding.encoding == std::string("cdr") ? 4 : 5] ^= 1;
    }
    const std::string twice =
        Declared(encoding) + MessageOn(1, encoding.message) + MessageOn(1, later);
    EXPECT_EQ(ReadFile(File(twice)).notes.find("differ"), std::string::npos) << encoding.encoding;
    const Read read = ReadFile(File(twice + MessageOn(1, encoding.other)));
    EXPECT_NE(
        read.notes.find(
            "/left/camera_info: 1 of 3 messages differs from the one before; the last is kept"),
        std::string::npos)
        << read.notes;
    const auto& intrinsics = read.robot.camera(0).intrinsics();
    EXPECT_TRUE(intrinsics.fx() == 410 || intrinsics.width() == 639);
  }
}

TEST(McapTest, TakesTheTopicsThatAreWanted) {
  const Encoding encoding = Encodings()[0];
  const std::string file =
      File(Declared(encoding) + Channel(2, "/right", "protobuf").replace(11, 2, Int<uint16_t>(1)) +
           Schema(3, "sensor_msgs/Imu") + Channel(3, "/imu", "ros1") + Schema(4, encoding.schema) +
           Channel(4, "/json", "json") + MessageOn(1, encoding.message) +
           MessageOn(2, encoding.message) + MessageOn(3, "any") + MessageOn(4, "{}"));
  EXPECT_EQ(ReadFile(file).robot.camera_size(), 2);
  EXPECT_NE(ReadFile(file).notes.find("file: /imu: 'sensor_msgs/Imu' not kept"), std::string::npos);
  const Read right = ReadFile(file, {"/right"});
  ASSERT_EQ(right.robot.camera_size(), 1);
  EXPECT_EQ(right.robot.camera(0).name(), "/right");
  EXPECT_EQ(ReadFile(file, {"/left/camera_info", "/right"}).robot.camera_size(), 2);
  const struct {
    const char *topic, *refusal;
  } cases[] = {{"/up", "has no message on the topic /up"},
               {"/imu", "has on the topic /imu sensor_msgs/Imu in ros1, expected foxglove.Camera"},
               {"/json", "has on the topic /json foxglove.CameraCalibration in json, expected"}};
  for (const auto& given : cases) {
    const Read read = ReadFile(file, {given.topic});
    EXPECT_NE(read.refusal.find(given.refusal), std::string::npos) << read.refusal;
  }
  EXPECT_NE(ReadFile(File("")).refusal.find("has no message of foxglove.CameraCalibration or "
                                            "sensor_msgs/CameraInfo among 0"),
            std::string::npos);
}

// What a file makes calib keep is bounded, whatever it decompresses to.
TEST(McapTest, KeepsNoMoreThanItSays) {
  const Encoding encoding = Encodings()[0];
  std::string records = Schema(1, encoding.schema);
  const auto named = [&](size_t size) {
    return encoding.message +
           Foxglove("CameraCalibration", "frame_id: '" + std::string(size, 'x') + "'");
  };
  for (int id = 1; id <= 5; ++id) {
    records += Channel(id, "/" + std::to_string(id), "protobuf").replace(11, 2, Int<uint16_t>(1)) +
               MessageOn(id, named(1000000));
  }
  EXPECT_NE(ReadFile(File(Chunk("zstd", records))).refusal.find("take more than 4194304 bytes"),
            std::string::npos);
  const std::string larger = Declared(encoding) + MessageOn(1, named(kLargestKeptOfMcap));
  EXPECT_NE(ReadFile(File(Chunk("lz4", larger))).refusal.find("has more than 1048576"),
            std::string::npos);
}

// --- Transforms ----------------------------------------------------------------------------------

TEST(McapTest, TakesThePoseOfTheCamerasFrame) {
  const Encoding encoding = Encodings()[0];
  const auto pose = [](const std::string& parent, const std::string& child, int x) {
    return "parent_frame_id: '" + parent + "' child_frame_id: '" + child +
           "' translation { x: " + std::to_string(x) + " } rotation { w: 1 }";
  };
  const std::string cameras =
      Declared(encoding) + Channel(2, "/right/info", "protobuf").replace(11, 2, Int<uint16_t>(1)) +
      MessageOn(1, encoding.message) +
      MessageOn(2, encoding.message + Foxglove("CameraCalibration", "frame_id: 'right_optical'"));
  const auto read = [&](const std::string& type, const std::string& text) {
    return ReadFile(File(cameras + Schema(5, "foxglove." + type) + Channel(5, "/tf", "protobuf") +
                         MessageOn(5, Foxglove(type, text))));
  };
  const Read one = read("FrameTransform", pose("base", "left_optical", 3));
  EXPECT_EQ(one.robot.camera(0).extrinsics().a(3), -3) << "to the camera";
  EXPECT_FALSE(one.robot.camera(1).has_extrinsics());
  const Read both =
      read("FrameTransforms", "transforms { " + pose("base", "left_optical", 3) +
                                  " } transforms { " + pose("base", "right_optical", 4) +
                                  " } transforms { " + pose("map", "base", 5) + " }");
  EXPECT_EQ(both.robot.camera(0).extrinsics().a(3), -3);
  EXPECT_EQ(both.robot.camera(1).extrinsics().a(3), -4);
  EXPECT_NE(both.notes.find("/tf[2]: not kept"), std::string::npos) << both.notes;
  const Read apart =
      read("FrameTransforms", "transforms { " + pose("base", "left_optical", 3) +
                                  " } transforms { " + pose("arm", "right_optical", 4) + " }");
  EXPECT_EQ(apart.robot.camera(0).has_extrinsics() + apart.robot.camera(1).has_extrinsics(), 1);
  EXPECT_NE(apart.notes.find("it counts from arm, but that of another camera from base"),
            std::string::npos)
      << apart.notes;
  EXPECT_NE(read("FrameTransform", "child_frame_id: 'left_optical'").refusal, "") << "no rotation";

  // Of messages one after another.
  const auto read_all = [&](const std::vector<std::string>& messages) {
    std::string all =
        cameras + Schema(5, "foxglove.FrameTransform") + Channel(5, "/tf", "protobuf");
    for (const std::string& message : messages) all += MessageOn(5, message);
    return ReadFile(File(all), {"/left/camera_info"});
  };
  const auto at = [&](const std::string& child, int x) {
    return Foxglove("FrameTransform", pose("base", child, x));
  };
  const Read moved = read_all({at("left_optical", 3), at("left_optical", 3), at("wheel", 1),
                               at("wheel", 2), at("left_optical", 4)});
  EXPECT_EQ(moved.robot.camera(0).extrinsics().a(3), -4);
  EXPECT_NE(moved.notes.find("/tf[0]: 1 of 3 messages differs"), std::string::npos) << moved.notes;
  EXPECT_EQ(moved.notes.find("/tf[1]: 1 of 2"), std::string::npos) << moved.notes;

  std::vector<std::string> many = {at("left_optical", 3), "\1",
                                   std::string(kLargestKeptOfMcap + 1, '\0')};
  for (int i = 0; i < 5000; ++i) many.push_back(at("joint" + std::to_string(i), 1));
  const Read left = read_all(many);
  EXPECT_EQ(left.robot.camera(0).extrinsics().a(3), -3) << left.refusal;
  EXPECT_NE(left.damage.find(" transforms or messages of them are damaged"), std::string::npos)
      << left.damage;
}

// --- Writing -------------------------------------------------------------------------------------

struct Written {
  std::string file, notes;
  std::map<std::string, std::string> schemas;                // by topic
  std::map<std::string, std::vector<std::string>> messages;  // likewise
};

Written Write(const RobotCalibration& robot) {
  Written written;
  std::vector<CameraInRecord> cameras;
  for (const CameraCalibration& camera : robot.camera()) {
    const std::string place = "file: camera[" + std::to_string(cameras.size()) + "]";
    cameras.push_back({&camera, place, place + ".intrinsics"});
  }
  const Exporter& exporter = *FindExporter("mcap");
  ExportReport report;
  ExportRig rig = PrepareRig(exporter, cameras, {}, &report);
  rig.record = &robot;
  written.file = exporter.write(rig, &report)[0].text;
  EXPECT_TRUE(report.leftovers.empty()) << "the record has it all";
  for (const std::string& note : report.notes) written.notes += note + "\n";
  const McapEnd end =
      ReadMcap(written.file, [&](const McapChannel& channel, std::string_view bytes) {
        EXPECT_EQ(channel.encoding, "protobuf");
        written.schemas[channel.topic] = channel.schema;
        written.messages[channel.topic].emplace_back(bytes);
      });
  EXPECT_EQ(end.damage, "");
  return written;
}

RobotCalibration Robot(const std::string& cameras) {
  RobotCalibration robot;
  EXPECT_TRUE(TextFormat::ParseFromString(cameras, &robot)) << cameras;
  return robot;
}

TEST(McapTest, WritesWhatComesBack) {
  const RobotCalibration robot =
      Robot(std::string("camera { ") + kCamera +
            " } camera { intrinsics { fx: 1 fy: 2 skew: 0.5 cx: 3 cy: 4 k: [1, 2, 3, 4] width: 5 "
            "height: 6 } extrinsics { a: [-1, 0, 0, 1, 0, -1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1] } "
            "name: 'a rig/up' }");
  Written written = Write(robot);
  EXPECT_EQ(written.messages["/record"][0], robot.SerializeAsString());
  EXPECT_EQ(written.schemas["/record"], "zarvo.calibration.RobotCalibration");
  EXPECT_EQ(written.messages["/tf"].size(), 2u) << "the first camera is where the rig is";
  Read read = ReadFile(written.file);
  ASSERT_EQ(read.refusal + read.damage, "");
  const auto& a = read.robot.camera(0).extrinsics().a();
  EXPECT_TRUE(RigidTransform::FromRows({a.begin(), a.end()}).IsIdentity());
  read.robot.mutable_camera(0)->clear_extrinsics();
  EXPECT_EQ(read.robot.DebugString(), robot.DebugString());
}

TEST(McapTest, DrawsImages) {
  const struct {
    const char *image, *encoding;  // what its message says; "" if there is none
    int step;
    std::string data;
  } cases[] = {
      {"width: 2 height: 2 stride: 3 format: 'GRAY8' imgdata: 'ab-cd-'", "mono8", 2, "abcd"},
      {"width: 1 height: 2 format: 'GRAY16' imgdata: 'abcd'", "mono16", 2, "abcd"},
      {"width: 1 height: 2 format: 'rgb8' imgdata: 'abcdef'", "rgb8", 3, "abcdef"},
      {"width: 1 height: 2 format: 'BGR8' imgdata: 'abcdef'", "rgb8", 3, "cbafed"},
      {"width: 1 height: 1 format: 'BGRA8' imgdata: 'abcd'", "rgba8", 4, "cbad"},
      {"width: 2 height: 1 format: 'BAYER_RGGB8' imgdata: 'ab'", "bayer_rggb8", 2, "ab"},
      {"width: 1 height: 1 format: 'BAYER_RGGB16' imgdata: 'ab'", "mono16", 2, "ab"},
      {"width: 2 height: 1 format: 'NV12' imgdata: 'ab'", "", 0, ""},
      {"width: 3 height: 1 format: 'GRAY8' imgdata: 'ab'", "", 0, ""},
  };
  for (const auto& given : cases) {
    Written written = Write(
        Robot("camera { " + std::string(kCamera) + " intrinsics_image { " + given.image + " } }"));
    const std::string topic = "/left/intrinsics_image";
    if (*given.encoding == '\0') {
      EXPECT_EQ(written.schemas.count(topic), 0u);
      EXPECT_EQ(written.notes.find("camera[0].intrinsics_image: "), 0u) << written.notes;
      continue;
    }
    EXPECT_EQ(written.schemas[topic], "foxglove.RawImage");
    const std::unique_ptr<Message> image = NewFoxgloveMessage("foxglove.RawImage");
    ASSERT_TRUE(image->ParseFromString(written.messages[topic][0]));
    const auto value = [&](const char* field) {
      return image->GetReflection()->GetString(*image,
                                               image->GetDescriptor()->FindFieldByName(field));
    };
    const auto number = [&](const char* field) {
      return static_cast<int>(image->GetReflection()->GetUInt32(
          *image, image->GetDescriptor()->FindFieldByName(field)));
    };
    EXPECT_EQ(value("encoding"), given.encoding);
    EXPECT_EQ(value("frame_id"), "left");
    EXPECT_EQ(value("data"), given.data) << given.encoding;
    EXPECT_EQ(number("step"), given.step);
    EXPECT_EQ(static_cast<size_t>(number("step") * number("height")), given.data.size());
  }
  Written jpeg = Write(Robot("camera { " + std::string(kCamera) +
                             " extrinsics_image { imgdata: '\\377\\330\\377' } }"));
  EXPECT_EQ(jpeg.schemas["/left/extrinsics_image"], "foxglove.CompressedImage");
}

TEST(McapTest, RefusesOneNameForTwoCameras) {
  const std::string camera = "camera { " + std::string(kCamera) + " } ";
  EXPECT_THROW(Write(Robot(camera + camera)), Failure);
}

// A frame of a camera is never its own parent.
TEST(McapTest, CallsTheReferenceByAFreeName) {
  const Written written = Write(
      Robot("camera { intrinsics { fx: 1 fy: 2 skew: 0 cx: 3 cy: 4 width: 5 height: 6 } "
            "extrinsics { a: [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1] } name: 'rig' }"));
  EXPECT_NE(written.notes.find("is called rig_frame, since"), std::string::npos) << written.notes;
}

// Several chunks, each with its index.
TEST(McapTest, WritesLargeFilesInChunks) {
  McapWriter writer;
  const uint16_t channel = writer.AddChannel("/a", writer.AddSchema("s", ""));
  const std::string large(700000, 'x');
  for (int i = 0; i < 5; ++i) writer.AddMessage(channel, large + std::to_string(i));
  const std::string file = writer.Finish();
  int messages = 0;
  const McapEnd end = ReadMcap(file, [&](const McapChannel& of, std::string_view bytes) {
    EXPECT_EQ(of.topic, "/a");
    EXPECT_EQ(bytes, large + std::to_string(messages++));
  });
  EXPECT_EQ(end.damage, "");
  EXPECT_EQ(messages, 5);
}

}  // namespace
}  // namespace calib
