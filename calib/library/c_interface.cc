// The functions for C: records are parsed and serialized, texts copied over, and a result keeps all
// that it points to.
#include <climits>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "calib/library/calibration_formats.h"
#include "calib/library/calibration_formats_c.h"
#include "calib/tools/exporters.h"
#include "calib/tools/import_formats.h"

namespace formats = zarvo::calibration_formats;
using formats::File;
using formats::Outcome;
using formats::Status;
using zarvo::calibration::RobotCalibration;

namespace {

struct Result : calibration_formats_result {
  Outcome outcome;
  std::vector<File> own_files;
  std::vector<calibration_formats_note> c_notes;
  std::vector<calibration_formats_file> c_files;

  // Points to what is there.
  void Fill() {
    c_notes.reserve(outcome.notes.size());
    for (const formats::Note& note : outcome.notes) {
      c_notes.push_back({static_cast<int>(note.kind), note.text.c_str()});
    }
    c_files.reserve(own_files.size());
    for (const File& file : own_files) {
      c_files.push_back({file.name.c_str(), file.text.data(), file.text.size()});
    }
    status = static_cast<int>(outcome.status);
    error = outcome.error.c_str();
    format = outcome.format.c_str();
    notes = c_notes.data();
    note_count = c_notes.size();
    files = c_files.data();
    file_count = c_files.size();
  }
};

constexpr calibration_formats_result kNoMemory = {
    static_cast<int>(Status::kNoMemory), "", "", nullptr, 0, nullptr, 0};

// What `work` makes of an empty result.
template <typename Work>
const calibration_formats_result* Make(const Work& work) noexcept {
  Result* result = nullptr;
  try {
    result = new Result;
    work(result);
    if (result->outcome.status != Status::kNoMemory) {
      result->Fill();
      return result;
    }
  } catch (const std::bad_alloc&) {  // as below
  }
  delete result;
  return &kNoMemory;
}

const char* Word(const char* word) { return word == nullptr ? "" : word; }

// Without memory, nullptr.
template <typename Name>
const char* Named(const Name& name) noexcept {
  try {
    return name();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void Refuse(const std::string& error, Result* result) {
  result->outcome.status = Status::kRefused;
  result->outcome.error = error;
}

formats::WriteOptions FromC(const calibration_formats_write_options* from) {
  formats::WriteOptions options;
  if (from == nullptr) return options;
  options.lens = Word(from->lens);
  options.lossy = from->lossy != 0;
  options.from_camera = from->from_camera != 0;
  options.width = from->width;
  options.height = from->height;
  options.name = Word(from->name);
  options.frame = Word(from->frame);
  if (from->rectification != nullptr) {
    options.rectification.assign(from->rectification, from->rectification + 9);
  }
  if (from->projection != nullptr) {
    options.projection.assign(from->projection, from->projection + 12);
  }
  return options;
}

// Calls `write` with the record and the options.
template <typename Write>
const calibration_formats_result* Written(const char* record, size_t size,
                                          const calibration_formats_write_options* from,
                                          const Write& write) noexcept {
  return Make([&](Result* result) {
    const formats::WriteOptions options = FromC(from);
    RobotCalibration robot;
    if (size > INT_MAX || !robot.ParsePartialFromArray(record, static_cast<int>(size))) {
      return Refuse("the record: holds no RobotCalibration", result);
    }
    if (!robot.IsInitialized()) {
      return Refuse("the record: misses " + robot.InitializationErrorString(), result);
    }
    write(robot, options, result);
  });
}

}  // namespace

const char* calibration_formats_readable(size_t number) {
  return Named([&] {
    const std::vector<calib::ImportFormat>& all = calib::ImportFormats();
    return number < all.size() ? all[number].name : nullptr;
  });
}

const char* calibration_formats_writable(size_t number) {
  return Named([&] {
    const std::vector<calib::Exporter>& all = calib::Exporters();
    return number < all.size() ? all[number].format.c_str() : nullptr;
  });
}

const calibration_formats_result* calibration_formats_read(
    const calibration_formats_file* files, size_t count,
    const calibration_formats_read_options* from) {
  return Make([&](Result* result) {
    formats::ReadOptions options;
    if (from != nullptr) {
      options.format = Word(from->format);
      options.lens = Word(from->lens);
      options.lossy = from->lossy != 0;
    }
    std::vector<File> own;
    own.reserve(count);
    for (size_t i = 0; i < count; ++i) {
      own.push_back({Word(files[i].name), std::string(Word(files[i].bytes), files[i].size)});
    }
    RobotCalibration robot;
    result->outcome = formats::Read(own, options, &robot);
    if (result->outcome.status != Status::kOk) return;
    result->own_files.push_back({"", robot.SerializePartialAsString()});
  });
}

const calibration_formats_result* calibration_formats_write(
    const char* format, const char* record, size_t size,
    const calibration_formats_write_options* from) {
  return Written(
      record, size, from,
      [&](const RobotCalibration& robot, const formats::WriteOptions& options, Result* result) {
        result->outcome = formats::Write(robot, Word(format), options, &result->own_files);
      });
}

const calibration_formats_result* calibration_formats_write_text(
    const char* format, const char* record, size_t size,
    const calibration_formats_write_options* from) {
  return Written(
      record, size, from,
      [&](const RobotCalibration& robot, const formats::WriteOptions& options, Result* result) {
        std::string text;
        result->outcome = formats::WriteText(Word(format), robot, options, &text);
        if (result->outcome.status != Status::kOk) return;
        result->own_files.push_back({"", std::move(text)});
      });
}

void calibration_formats_free(const calibration_formats_result* result) {
  if (result != &kNoMemory) delete static_cast<const Result*>(result);
}
