#include "calib/charts/chart_style.h"

namespace calib {
namespace {

constexpr int kColors = 6;
constexpr const char* kOnLight[kColors] = {"#0b5394", "#d9730d", "#117a65",
                                           "#a0307a", "#5f6c7f", "#7a4b00"};
constexpr const char* kOnDark[kColors] = {"#6cb2f5", "#ffb366", "#57d3b5",
                                          "#f29ad2", "#aab7c8", "#e3c58a"};

// t: title, n: note, x and y: numbers at ticks, a: names of axes, k: labels within the drawing;
// b: ground, g: grid, f: frame, i and j: area and its border, m: mark, o: what lies far off,
// h: cells, u, c and v: text in pale, middle and full cells, l: lines, p: points, q: hollow points,
// s: swarm of points, hl: ground of a line over them, w: verdict.
constexpr char kShapes[] =
    "text{font-family:'DejaVu Sans','Helvetica Neue',Arial,sans-serif;font-size:12px;fill:#333}"
    ".t{font-size:15px;font-weight:bold;fill:#111}.h2{font-size:13px}.n{fill:#555}.x,.u,.v,.c{text-"
    "anchor:middle}"
    ".y{text-anchor:end}.a{font-weight:bold}.z{font-size:10px}"
    ".b{fill:#fff}.g{stroke:#e4e4e4}.f{fill:none;stroke:#767676}"
    ".i{fill:#f2f6fb}.j{fill:none;stroke:#4a6c94;stroke-width:1.5}"
    ".m{stroke:#9c2f14;stroke-dasharray:6 4}.k,.e{paint-order:stroke;stroke:#fff;stroke-width:5px;"
    "stroke-linejoin:round}.hl{fill:none;stroke:#fff;stroke-width:6}"
    ".k{fill:#9c2f14}.o{fill:#9c2f14}.h{fill:#0b5394;stroke:#9db3ca;stroke-width:.5}"
    ".u,.c{fill:#111}.v{fill:#fff}.q{fill:#fff;stroke-width:1.3}.l{fill:none;stroke-width:1.5}"
    ".on{stroke:#fff;stroke-width:.8}.s{fill:none}.d{stroke-dasharray:5 3}"
    ".w{font-weight:bold}.good{fill:#117a65}.bad{fill:#b3261e}.r{fill:none;stroke:#b3261e;"
    "stroke-width:2}";
constexpr char kDarkShapes[] =
    "text{fill:#ccd3dc}.t{fill:#f2f4f7}.n{fill:#a9b2be}.b{fill:#14171c}.g{stroke:#2b313a}"
    ".f{stroke:#8b95a3}.i{fill:#1a212b}.j{stroke:#7fa3cf}.m{stroke:#ff9d80}"
    ".k,.e,.hl{stroke:#14171c}.k,.o{fill:#ff9d80}.h{fill:#6cb2f5;stroke:#3a4a5c}.u{fill:#f2f4f7}.c{"
    "fill:#111}"
    ".v{fill:#0b0d10}.q{fill:#14171c}.good{fill:#57d3b5}.bad{fill:#ff8a80}.r{stroke:#ff8a80}";

std::string Colors(const char* const* palette) {
  std::string style;
  for (int i = 0; i < kColors; ++i) {
    const std::string number = std::to_string(i);
    style.append(".l").append(number).append(",.q").append(number);
    style.append("{stroke:").append(palette[i]).append("}.p").append(number);
    style.append("{fill:").append(palette[i]).append("}");
  }
  return style;
}

}  // namespace

std::string ChartStyle() {
  return kShapes + Colors(kOnLight) + "@media (prefers-color-scheme:dark){" + kDarkShapes +
         Colors(kOnDark) + "}";
}

std::string ColorClass(const char* letter, int color) {
  return letter + std::to_string(color % kColors);
}

}  // namespace calib
