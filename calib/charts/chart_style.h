// How charts look: colors that are told apart without seeing color (by lightness, and by dashes and
// hollow points in second series), on light and on dark ground.
#ifndef CALIB_CHARTS_CHART_STYLE_H_
#define CALIB_CHARTS_CHART_STYLE_H_

#include <string>

namespace calib {

// The style sheet of the classes that chart drawings use.
std::string ChartStyle();

// The class of what is drawn in a color: a letter and a number, such as "l2".
std::string ColorClass(const char* letter, int color);

}  // namespace calib

#endif  // CALIB_CHARTS_CHART_STYLE_H_
