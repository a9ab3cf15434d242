#include "calib/tools/export_lens.h"

#include <algorithm>

#include "calib/console/failure.h"
#include "calib/console/number.h"

namespace calib {

using Order = LensModel::Order;
using zarvo::calibration::CameraIntrinsics;

namespace {

// Four radial coefficients and no tangential one are those of a fisheye: no other model is listed
// so.
bool IsFisheye(const CameraIntrinsics& intrinsics) {
  return intrinsics.k_size() == 4 && intrinsics.p_size() == 0;
}

bool Fits(const LensModel& model, const CameraIntrinsics& intrinsics) {
  if (IsFisheye(intrinsics) && model.order != Order::kFisheye) return false;
  return model.in_camera_info && intrinsics.k_size() <= model.k() &&
         intrinsics.p_size() <= model.p();
}

std::string FittingModels(const CameraIntrinsics& intrinsics) {
  std::string fitting;
  for (const LensModel& model : LensModels()) {
    if (Fits(model, intrinsics)) fitting += (fitting.empty() ? "" : ", ") + model.name;
  }
  return fitting.empty() ? "None fits." : "Those that fit are: " + fitting + ".";
}

// A place is a file's name with a colon, which may have a path behind it.

// A coefficient of the record, and its name in a form.
struct Coefficient {
  std::string name, field;
  double value;
};

std::vector<Coefficient> CoefficientsOf(const CameraIntrinsics& intrinsics) {
  std::vector<Coefficient> all;
  const auto add = [&](const std::string& list, int i, double value) {
    all.push_back({list + std::to_string(i + 1), list + "[" + std::to_string(i) + "]", value});
  };
  for (int i = 0; i < intrinsics.k_size(); ++i) add("k", i, intrinsics.k(i));
  for (int i = 0; i < intrinsics.p_size(); ++i) add("p", i, intrinsics.p(i));
  return all;
}

bool Has(const LensForm& form, const Coefficient& coefficient) {
  const auto& names = form.coefficients;
  return std::find(names.begin(), names.end(), coefficient.name) != names.end();
}

bool IsExactly(const LensForm& form, const std::vector<Coefficient>& all) {
  return form.coefficients.size() == all.size() &&
         std::all_of(all.begin(), all.end(), [&](const auto& one) { return Has(form, one); });
}

// Many write a k3 of 0 where there is none.
bool HasRoom(const LensForm& form, const std::vector<Coefficient>& all) {
  return std::all_of(all.begin(), all.end(), [&](const auto& one) {
    return Has(form, one) || (one.name == "k3" && one.value == 0);
  });
}

bool LosesNothing(const LensForm& form, const std::vector<Coefficient>& all) {
  return std::all_of(all.begin(), all.end(),
                     [&](const auto& one) { return Has(form, one) || one.value == 0; });
}

bool IsOf(const LensForm& form, const LensModel& lens, bool chosen) {
  if (chosen) return form.lens == lens.name;
  return (FindLensModel(form.lens)->order == Order::kFisheye) == (lens.order == Order::kFisheye);
}

std::string Lenses(const std::vector<LensForm>& forms) {
  std::string names;
  for (const LensForm& form : forms) {
    if (form.coefficients.empty()) continue;
    if (("|" + names + "|").find("|" + form.lens + "|") != std::string::npos) continue;
    names += (names.empty() ? "" : "|") + form.lens;
  }
  for (size_t bar; (bar = names.find('|')) != std::string::npos;) names.replace(bar, 1, ", ");
  return names;
}

}  // namespace

LensForm BrownForm(const std::string& lens, const std::string& word, size_t coefficients) {
  std::vector<std::string> names = {"k1", "k2", "p1", "p2", "k3", "k4", "k5", "k6"};
  names.resize(coefficients);
  return {lens, word, names};
}

LensForm FisheyeForm(const std::string& word) {
  return {"equidistant", word, {"k1", "k2", "k3", "k4"}};
}

const LensModel& LensOf(const CameraIntrinsics& intrinsics, const std::string& place,
                        const LensModel* chosen) {
  if (chosen != nullptr && Fits(*chosen, intrinsics)) return *chosen;
  if (chosen == nullptr) {
    for (const LensModel& model : LensModels()) {
      if (Fits(model, intrinsics)) return model;
    }
  }
  throw Failure(WithColon(place) + " has " + CoefficientCounts(intrinsics) + ", which do not fit " +
                    (chosen == nullptr ? "any lens model" : chosen->name),
                FittingModels(intrinsics));
}

const LensForm& FormOf(const CameraIntrinsics& intrinsics, const std::string& place,
                       const LensModel* chosen, const std::vector<LensForm>& forms,
                       const std::string& files) {
  const LensModel& lens = LensOf(intrinsics, place, chosen);
  const std::vector<Coefficient> all = CoefficientsOf(intrinsics);
  const LensForm* last = nullptr;
  for (const auto suits : {IsExactly, HasRoom, LosesNothing}) {
    for (const LensForm& form : forms) {
      if (!IsOf(form, lens, chosen != nullptr)) continue;
      if (suits(form, all)) return form;
      last = &form;
    }
  }
  if (last != nullptr) return *last;
  throw Failure(WithColon(place) + " has " + CoefficientCounts(intrinsics) + " of " + lens.name +
                    ", a lens that " + files + " cannot hold",
                "It holds " + Lenses(forms) + ".");
}

std::vector<double> CoefficientsIn(const LensForm& form, const CameraIntrinsics& intrinsics) {
  std::vector<double> values;
  for (const std::string& name : form.coefficients) {
    const auto& list = name[0] == 'k' ? intrinsics.k() : intrinsics.p();
    const int i = name[1] - '1';
    values.push_back(i < list.size() ? list.Get(i) : 0);
  }
  return values;
}

void VisitLostCoefficients(const LensForm& form, const CameraIntrinsics& intrinsics,
                           const std::string& place, const std::string& files,
                           const LeftoverVisitor& visit) {
  for (const Coefficient& one : CoefficientsOf(intrinsics)) {
    if (Has(form, one) || one.value == 0) continue;
    visit({Below(place, one.field) + " ",
           "is " + Shortest(one.value) + ", and " + files + " has no " + one.name +
               (form.word.empty() ? "" : " in " + form.word),
           Leftover::Kind::kLens});
  }
}

std::string CoefficientCounts(const CameraIntrinsics& intrinsics) {
  return std::to_string(intrinsics.k_size()) + " k and " + std::to_string(intrinsics.p_size()) +
         " p";
}

std::string WithColon(const std::string& place) { return place + (place.back() == ':' ? "" : ":"); }

std::string Below(const std::string& place, const std::string& field) {
  return place + (place.back() == ':' ? " " : ".") + field;
}

}  // namespace calib
