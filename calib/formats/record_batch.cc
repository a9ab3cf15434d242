#include "calib/formats/record_batch.h"

#include <sys/stat.h>

#include <utility>

#include "calib/console/date.h"
#include "calib/console/file.h"

namespace calib {
namespace {

constexpr size_t kBatchBytes = size_t{1} << 20;
constexpr size_t kBatchRecords = 4000;
constexpr size_t kBatchFiles = 100;
constexpr size_t kLargeBytes = size_t{1} << 22;

// Whether its bytes may be long in coming, as a pipe's.
bool MayLetWait(const std::string& path) {
  struct stat status;
  const std::string file = SplitPath(path).path;
  return file == "-" || (stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode));
}

}  // namespace

void RecordBatch::Clear() {
  parts_.clear();
  items_.clear();
  appended_.clear();
  copied_.clear();
  blocks_.clear();
  bytes_ = 0;
  borrowed_ = closed_ = false;
}

bool RecordBatch::Full() const {
  return closed_ || bytes_ >= kBatchBytes || items_.size() >= kBatchRecords ||
         parts_.size() >= kBatchFiles;
}

void RecordBatch::Add(std::string_view bytes, const std::shared_ptr<char>* holder) {
  bytes_ += bytes.size();
  if (holder != nullptr) {
    items_.push_back({bytes.data(), 0, bytes.size()});
    if (blocks_.empty() || blocks_.back() != *holder) blocks_.push_back(*holder);
  } else {
    items_.push_back({nullptr, copied_.size(), bytes.size()});
    copied_ += bytes;
  }
}

void RecordBatch::Borrow(std::string_view bytes) {
  items_.push_back({bytes.data(), 0, bytes.size()});
  borrowed_ = closed_ = true;
}

bool RecordBatchReader::Fill(RecordBatch* batch) {
  batch->Clear();
  while (next_ < paths_.size()) {
    if (batch->Full()) return true;
    // Others can finish what there is meanwhile.
    const bool opens = file_ == nullptr;
    if (opens && !batch->parts_.empty() && MayLetWait(paths_[next_])) return true;
    AddPart(batch);
  }
  return false;
}

void RecordBatchReader::AddPart(RecordBatch* batch) {
  RecordBatch::Part& part = batch->parts_.emplace_back();
  part.file = next_;
  part.name = InputName(paths_[next_]);
  part.begin = batch->items_.size();
  part.last = true;  // unless all goes well
  try {
    if (file_ == nullptr) Open();
    part.name = file_->name();
    part.type = file_->type();
    part.many = file_->many();
    part.last = !AddRecords(batch, &part);
  } catch (const DamagedLog& damaged) {
    part.failure = damaged;
    part.damaged = true;
  } catch (const Failure& failure) {
    part.failure = failure;
  }
  part.end = batch->items_.size();
  part.notes = std::exchange(notes_, {});
  if (!part.last) return;
  file_ = nullptr;
  ++next_;
}

void RecordBatchReader::Open() {
  file_ = std::make_unique<RecordFile>(paths_[next_], flags_,
                                       [this](const std::string& note) { notes_.push_back(note); });
  pending_ = false;
  if (opened_) opened_(*file_);
  times_.reset();
  if (tell_times_) times_.emplace(SplitPath(paths_[next_]).path);
}

// False at the end of the file.
bool RecordBatchReader::AddRecords(RecordBatch* batch, RecordBatch::Part* part) {
  if (next_ < abandoned_) return false;
  while (!batch->Full()) {
    if (!pending_ && !file_->Next(&encoded_)) return false;
    const std::shared_ptr<char>* const holder = file_->Holder(encoded_.bytes);
    const bool large = holder == nullptr && encoded_.bytes.size() >= kLargeBytes;
    pending_ = large && !batch->items_.empty();
    if (pending_) {
      batch->closed_ = true;
      break;
    }
    if (batch->items_.size() == part->begin) part->record = encoded_;
    if (large) {
      batch->Borrow(encoded_.bytes);
    } else {
      batch->Add(encoded_.bytes, holder);
    }
    if (!times_) continue;
    const std::optional<int64_t> time = times_->TimeOf(encoded_.index);
    batch->appended_.push_back(time ? FormatDate(*time) : "");
  }
  return true;
}

}  // namespace calib
