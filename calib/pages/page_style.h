// How pages look, on screens of any width, light or dark, and on paper.
#ifndef CALIB_PAGES_PAGE_STYLE_H_
#define CALIB_PAGES_PAGE_STYLE_H_

#include <string>

namespace calib {

std::string PageStyle();

}  // namespace calib

#endif  // CALIB_PAGES_PAGE_STYLE_H_
