#include "calib/tools/import_lens.h"

#include <algorithm>
#include <utility>

#include "calib/console/number.h"

namespace calib {

using Order = LensModel::Order;
using zarvo::calibration::CameraIntrinsics;

namespace {

constexpr char kOption[] = "--distortion-model";
constexpr size_t kHeldOfBrown = 8;

bool IsOneOf(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// Keys, squeezed, of values that name a lens, and of others where it may stand as well.
bool NamesLens(const std::string& key) {
  return key == "distortionmodel" || key == "distmodel" || key == "lensmodel";
}
bool MayNameLens(const std::string& key) {
  static const std::vector<std::string> keys = {
      "cameramodel", "cameratype", "projectionmodel", "projection", "distortiontype", "modeltype",
      "modelname",   "model",      "lenstype",        "lens",       "distortion"};
  return IsOneOf(keys, key);
}

// Keys of values that say yes or no.
bool AsksForFisheye(const std::string& key) {
  static const std::vector<std::string> keys = {"fisheyemodel", "fisheye", "isfisheye",
                                                "usefisheye", "usefisheyemodel"};
  return IsOneOf(keys, key);
}

bool HintsAtFisheye(const std::string& text) {
  for (const char* word : {"fisheye", "kannala", "equidistant"}) {
    if (text.find(word) != std::string::npos) return true;
  }
  return false;
}

// Keys of what belongs to a lens; those of two cameras end in 1 and 2.
bool BelongsToLens(std::string key, bool text) {
  while (!key.empty() && key.back() >= '0' && key.back() <= '9') key.pop_back();
  static const std::vector<std::string> numbers = {"k", "p"}, lists = {"d", "dist", "kc"},
                                        either = {"distortion",       "distortioncoefficients",
                                                  "distortioncoeffs", "distortionparameters",
                                                  "distortionvector", "distcoef",
                                                  "distcoeff",        "distcoeffs",
                                                  "mirrorparameters"};
  if (IsOneOf(text ? numbers : lists, key) || IsOneOf(either, key)) return true;
  const std::vector<LensModel>& models = LensModels();
  return std::any_of(models.begin(), models.end(),
                     [&](const LensModel& model) { return IsOneOf(model.parameters, key); });
}

std::string And(const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : " and ") + word;
  return list;
}

bool AllZeroFrom(const std::vector<double>& numbers, size_t first) {
  return std::all_of(numbers.begin() + static_cast<std::ptrdiff_t>(std::min(first, numbers.size())),
                     numbers.end(), [](double number) { return number == 0; });
}

}  // namespace

LensImport::LensImport(std::vector<Foreign> maps, const LensModel* chosen, const std::string& other)
    : maps_(std::move(maps)), chosen_(chosen) {
  for (const Foreign& map : maps_) {
    map.ForEachEntry([&](const std::string& key, const Foreign& value) {
      if (key != other) Read(key, value);
    });
  }
}

void LensImport::Read(const std::string& key, const Foreign& value) {
  const std::string squeezed = SqueezeName(key);
  if (squeezed == "xi" && !value.IsZero()) has_xi_ = true;
  if (AsksForFisheye(squeezed) && value.IsText()) return ReadSwitch(value);
  if (NamesLens(squeezed)) {
    const std::string name = value.Text();
    if (!name.empty()) words_.push_back({value, FindLensModel(name), true});
    return;
  }
  if (!MayNameLens(squeezed) || !value.IsText() || value.Peek().empty()) return;
  const LensModel* model = FindLensModel(value.Peek());
  const bool hint = model == nullptr && HintsAtFisheye(SqueezeName(value.Peek()));
  if (hint) model = FindLensModel("fisheye");
  // A type or a model that is no lens may be anything else.
  if (model == nullptr && squeezed != "cameramodel") return;
  if (model != nullptr) value.Text();
  words_.push_back({value, model, false, hint});
}

void LensImport::ReadSwitch(const Foreign& value) {
  const std::string text = SqueezeName(value.Text());
  if (text == "0" || text == "false" || text == "no" || text == "off") {
    no_fisheye_ = value;
  } else if (text == "true" || text == "yes" || text == "on" || value.Count() != 0) {
    words_.push_back({value, FindLensModel("fisheye")});
  }
}

std::vector<LensImport::Word> LensImport::ToldWords() const {
  std::vector<Word> told, unknown;
  for (const Word& word : words_) {
    if (word.model == nullptr) {
      (word.sure ? told : unknown).push_back(word);
    } else if (word.model->order != Order::kOpen && word.model->parameters.empty()) {
      told.push_back(word);
    }
  }
  return told.empty() ? unknown : told;
}

const LensModel* LensImport::ChosenDespite(const std::vector<Word>& told) const {
  const auto agrees = [this](const Word& word) { return word.model == chosen_; };
  if (std::any_of(told.begin(), told.end(), agrees)) return chosen_;
  for (const Word& word : told) {
    if (word.hint || word.model == nullptr || word.model->agreed != SIZE_MAX) {
      word.value.Text();
      word.value.NotKept(std::string(kOption) + " says that it is " + chosen_->name);
    } else {
      word.value.Refuse("is " + word.value.Spell() + ", but " + kOption + " says " + chosen_->name,
                        "Correct it there if it is wrong, else leave the option out.");
    }
  }
  if (no_fisheye_ && chosen_->order == Order::kFisheye) {
    no_fisheye_->Refuse(
        "is " + no_fisheye_->Spell() + ", but " + kOption + " says " + chosen_->name,
        "Correct it there if it is wrong, else leave the option out.");
  }
  return chosen_;
}

const LensModel* LensImport::ByCount(const Foreign& list, size_t coefficients) const {
  std::vector<const LensModel*> fitting;
  std::string sizes;
  for (const LensModel& model : LensModels()) {
    if (!model.in_camera_info) continue;
    if (model.order == Order::kFisheye && no_fisheye_) continue;
    if (model.Takes(coefficients)) fitting.push_back(&model);
    sizes += (sizes.empty() ? "" : ", or ") + model.SizesText() + " of " + model.name;
  }
  const auto alike = [&](const LensModel* model) { return model->order == fitting[0]->order; };
  if (!fitting.empty() && std::all_of(fitting.begin(), fitting.end(), alike)) return fitting[0];
  const std::string found = "has " + std::to_string(coefficients) + " coefficients";
  if (fitting.empty()) {
    list.Refuse(found + ", expected " + sizes, "Correct it there.");
  }
  list.Refuse(found + ", but nothing says of which lens: k1 k2 p1 p2, or k1 k2 k3 k4 of a fisheye",
              std::string("Say it with ") + kOption + ": plumb_bob or equidistant.");
}

const LensModel* LensImport::Choose(const Foreign& list, size_t coefficients) const {
  const std::vector<Word> told = ToldWords();
  if (chosen_ != nullptr) return ChosenDespite(told);
  const auto contradict = [](const Word& word, const Foreign& other) {
    word.value.Refuse("is " + word.value.Spell() + ", but " + other.path() + " is " + other.Spell(),
                      std::string("Say which of them is right with ") + kOption + ".");
  };
  for (const Word& word : told) {
    if (word.model != told[0].model) contradict(word, told[0].value);
    if (no_fisheye_ && word.model != nullptr && word.model->order == Order::kFisheye) {
      contradict(word, *no_fisheye_);
    }
  }
  if (!told.empty()) {
    if (told[0].model == nullptr) {
      told[0].value.Lose("is " + told[0].value.Spell() + ", no lens model that a record can hold");
    }
    return told[0].model;
  }
  for (const Word& word : words_) {
    if (word.model != nullptr && word.model->order != Order::kOpen) return word.model;
  }
  if (has_xi_) return FindLensModel("omni");
  return coefficients == 0 ? FindLensModel("none") : ByCount(list, coefficients);
}

void LensImport::Store(const Foreign& list, std::vector<double> numbers,
                       CameraIntrinsics* intrinsics) const {
  const LensModel* model = Choose(list, numbers.size());
  if (model == nullptr) return;
  if (model->order == Order::kBrown && AllZeroFrom(numbers, model->sizes.back())) {
    numbers.resize(std::min(numbers.size(), model->sizes.back()));
  }
  const std::string count = std::to_string(numbers.size());
  if (model->order == Order::kForeign) {
    if (AllZeroFrom(numbers, 0)) return;
    return list.Lose("has coefficients of the lens model " + model->name +
                     ", which k and p cannot hold");
  }
  if (!model->Takes(numbers.size())) {
    const std::string what =
        "has " + count + " coefficients, expected " + model->SizesText() + " of " + model->name;
    if (model->order == Order::kFisheye) return list.Lose(what);
    list.Refuse(what, "Check it against the distortion model that the file names.");
  }
  if (!AllZeroFrom(numbers, model->agreed)) {
    return list.Lose("is of the lens model " + model->name +
                     ", which some list as k1 k2 p1 p2 k3 and others as k1 k2 k3 p1 p2 (" +
                     kOption + " plumb_bob says the former)");
  }
  for (size_t i = 0; i < std::min(numbers.size(), kHeldOfBrown); ++i) {
    const bool tangential = model->order == Order::kBrown && (i == 2 || i == 3);
    tangential ? intrinsics->add_p(numbers[i]) : intrinsics->add_k(numbers[i]);
  }
  if (!AllZeroFrom(numbers, kHeldOfBrown)) {
    list.LoseLens("has a thin prism or tilt in [8] to [" + std::to_string(numbers.size() - 1) +
                      "], which k and p cannot hold",
                  numbers, intrinsics);
  }
}

void LensImport::StoreNamed(const Foreign& map, CameraIntrinsics* intrinsics,
                            const std::string& prefix) const {
  std::vector<double> k, p;
  for (const char* name : {"k1", "k2", "k3", "k4", "k5", "k6"}) {
    const auto value = map.Find({prefix + name});
    if (!value) break;
    k.push_back(value->Number());
  }
  if (const auto p1 = map.Find({prefix + "p1"})) {
    p = {p1->Number(), map.At({prefix + "p2"}).Number()};
  }
  if (k.empty() && p.empty()) return StoreNone();
  // Tangential ones are no fisheye's.
  const bool clear = !p.empty() && chosen_ == nullptr && ToldWords().empty();
  const LensModel* model =
      clear ? FindLensModel("plumb_bob") : Choose(map, std::max(k.size(), size_t{4}));
  if (model == nullptr) return;
  const bool fits = model->order == Order::kFisheye ? k.size() == 4 && AllZeroFrom(p, 0)
                                                    : model->order == Order::kBrown;
  if (!fits) {
    if (AllZeroFrom(k, 0) && AllZeroFrom(p, 0) && model->order != Order::kFisheye) return;
    return map.Lose("has coefficients that are not those of the lens model " + model->name);
  }
  for (const double number : k) intrinsics->add_k(number);
  if (model->order == Order::kBrown) {
    for (const double number : p) intrinsics->add_p(number);
  }
}

void LensImport::StoreNone() const {
  for (const Word& word : ToldWords()) {
    if (word.model == nullptr) {
      word.value.Lose("is " + word.value.Spell() + ", no lens model that a record can hold");
    } else if (word.model->order == Order::kFisheye || word.model->order == Order::kForeign) {
      word.value.Lose("is " + word.value.Spell() + ", but the file has no coefficients of it");
    }
  }
}

void LensImport::LoseParameters() const {
  for (const Word& word : words_) {
    if (word.model == nullptr || word.model->parameters.empty()) continue;
    word.value.Lose("is " + word.value.Spell() + ", whose " + And(word.model->parameters) +
                    " no field of a record holds");
  }
}

void LensImport::LoseUnread() const {
  for (const Foreign& map : maps_) {
    map.ForEachEntry([](const std::string& key, const Foreign& value) {
      if (value.IsUsed() || !BelongsToLens(SqueezeName(key), value.IsText())) return;
      if (!value.IsZero()) {
        value.Lose("is " + value.Spell() + ", which belongs to the lens, and is not kept");
      }
    });
  }
}

}  // namespace calib
