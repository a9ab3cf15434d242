// What a file tells of the lens of a camera, whichever words it does so with, and the distortion
// coefficients as k and p. Nothing that moves a point is left behind without being marked as lost
// (Foreign::Lose()), and no order of coefficients is guessed.
#ifndef CALIB_TOOLS_IMPORT_LENS_H_
#define CALIB_TOOLS_IMPORT_LENS_H_

#include <optional>
#include <string>
#include <vector>

#include "calib/tools/foreign.h"
#include "calib/tools/lens_models.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

class LensImport {
 public:
  // Reads what the keys of `maps`, which describe one camera, tell of its lens. `chosen` is the
  // model that the user says where they leave it open, or nullptr. The key `other` is one that
  // tells of something else in files of the tool.
  LensImport(std::vector<Foreign> maps, const LensModel* chosen, const std::string& other = "");

  // Stores k and p of the numbers that were read from `list`. Throws Failure if the file
  // contradicts itself or what the user says, or does not tell what the numbers mean.
  void Store(const Foreign& list, std::vector<double> numbers,
             zarvo::calibration::CameraIntrinsics* intrinsics) const;
  // Stores k and p of the coefficients that `map` has by their names, k1 to k6, p1 and p2, behind
  // `prefix`.
  void StoreNamed(const Foreign& map, zarvo::calibration::CameraIntrinsics* intrinsics,
                  const std::string& prefix = "") const;
  // Says so if the lens would need coefficients, of which the file has none.
  void StoreNone() const;

  // Marks as lost what a lens that the file names has beside coefficients: for files that tell it
  // by the lens's name alone.
  void LoseParameters() const;
  // Marks as lost what nobody read, though its key says that it belongs to a lens. To be called
  // last.
  void LoseUnread() const;

 private:
  // A value that names a lens.
  struct Word {
    Foreign value;
    const LensModel* model;  // nullptr: none that is known
    bool sure = false;       // that the value is about a lens, whatever it says
    bool hint = false;       // that it only mentions a fisheye
  };

  void Read(const std::string& key, const Foreign& value);
  void ReadSwitch(const Foreign& value);
  // The words that say how coefficients are listed, or may say so.
  std::vector<Word> ToldWords() const;
  // What to take the list for; nullptr if a record cannot hold the lens, which is then marked.
  const LensModel* Choose(const Foreign& list, size_t coefficients) const;
  const LensModel* ChosenDespite(const std::vector<Word>& told) const;
  const LensModel* ByCount(const Foreign& list, size_t coefficients) const;

  std::vector<Foreign> maps_;
  const LensModel* chosen_;
  std::vector<Word> words_;
  std::optional<Foreign> no_fisheye_;  // the value that says so
  bool has_xi_ = false;
};

}  // namespace calib

#endif  // CALIB_TOOLS_IMPORT_LENS_H_
