// What charts draw and what they leave out: ranges, thinning, labels, and the SVG of all of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "calib/charts/chart.h"
#include "calib/charts/chart_svg.h"
#include "calib/charts/chart_text.h"
#include "calib/charts/label_places.h"
#include "calib/charts/overlay.h"
#include "calib/charts/range.h"
#include "calib/charts/text_size.h"
#include "calib/charts/thinning.h"

namespace calib {
namespace {

struct RangeCase {
  const char* what;
  std::vector<double> values;
  double low, high;
};

TEST(RangeTest, LeavesOutFewThatLieFarOff) {
  const RangeCase cases[] = {{"one value", {3}, 3, 3},
                             {"few values", {1, 2, 1e9}, 1, 1e9},
                             {"one wild", {1, 2, 3, 4, 1e9}, 1, 4},
                             {"one wild below", {-1e9, 1, 2, 3, 4}, 1, 4},
                             {"too many wild", {1, 2, 3, 4, 5, 1e9, 1e9}, 1, 1e9},
                             {"all alike but one", {0, 0, 0, 0, 0, 7}, 0, 7},
                             {"a step", {0, 0, 0, 0, 1, 1, 1, 1}, 0, 1},
                             {"half as long without it", {5, 10, 10, 11, 11, 17}, 5, 17},
                             {"a wide middle", {0, 1, 2, 3, 4, 13}, 0, 13}};
  for (const RangeCase& test : cases) {
    const Range range = RangeToDraw(test.values, 0.1);
    EXPECT_EQ(range.low, test.low) << test.what;
    EXPECT_EQ(range.high, test.high) << test.what;
  }
}

TEST(TextSizeTest, ShortensAndBreaksToTheWidth) {
  for (const std::string text :
       {"", "a", "sample_points[123].img_x", "MMMMMMMMMMMMMMMMMMMMMMMMMMMM",
        "\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9\u00e9"}) {
    for (const double width : {40.0, 90.0, 1000.0}) {
      const std::string shortened = ShortenToWidth(text, width, 12);
      EXPECT_LE(TextWidth(shortened, 12), width) << text;
      EXPECT_EQ(shortened == text, TextWidth(text, 12) <= width) << text;
      for (const std::string& line : WrapToWidth(text + " " + text, width, 12)) {
        EXPECT_LE(TextWidth(line, 12), width) << text;
      }
    }
  }
  EXPECT_EQ(WrapToWidth("one two", 1000, 12), std::vector<std::string>{"one two"});
  EXPECT_EQ(WrapToWidth("one two", 30, 12), (std::vector<std::string>{"one", "two"}));
}

TEST(LabelPlacesTest, TakesTheFirstThatIsFreeAndInside) {
  LabelPlaces places({0, 0, 10, 10});
  EXPECT_EQ(places.Take({{1, 1, 5, 5}}), 0);
  EXPECT_EQ(places.Take({{4, 4, 6, 6}, {8, 8, 11, 9}, {5, 5, 6, 6}}), 2);
  EXPECT_EQ(places.Take({{0, 0, 2, 2}, {-1, 0, 1, 1}}), -1);
  EXPECT_EQ(places.Take({{6, 5, 7, 6}}), 0);  // which touches one
  EXPECT_EQ(places.Take({{5, 6, 6, 7}}), 0);
}

TEST(ThinningTest, KeepsEveryCellOnce) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> anywhere(0, 50);
  std::vector<Pixel> points;
  for (int i = 0; i < 2000; ++i) points.push_back({anywhere(random), anywhere(random)});
  std::vector<int> hit(25 * 25), drawn(25 * 25);
  for (const Pixel& point : points) {
    hit[static_cast<size_t>(point.y / 2) * 25 + static_cast<size_t>(point.x / 2)] = 1;
  }
  for (const DotRun& run : HitCells(points, 2)) {
    for (long i = 0; i < run.count; ++i) {
      ++drawn[static_cast<size_t>(run.row * 25 + run.column + i)];
    }
  }
  EXPECT_EQ(drawn, hit);
}

TEST(ThinningTest, KeepsExtremesOfACurve) {
  std::vector<Pixel> curve;
  for (int i = 0; i < 1000; ++i) curve.push_back({i / 100.0, i == 555 ? 9.0 : i == 557 ? -9.0 : 0});
  const std::vector<Pixel> thin = ThinnedCurve(curve);
  EXPECT_LE(thin.size(), 40u);
  const auto is = [&](double y) {
    return std::any_of(thin.begin(), thin.end(), [y](const Pixel& pixel) { return pixel.y == y; });
  };
  EXPECT_TRUE(is(9) && is(-9));
  EXPECT_EQ(thin.front().x, curve.front().x);
  EXPECT_EQ(thin.back().x, curve.back().x);
}

Chart CurveOf(const std::vector<double>& values) {
  Chart chart;
  chart.title = "curve";
  chart.x_name = "x";
  chart.y_name = "y";
  ChartSeries series;
  series.element = "values";
  series.connected = true;
  for (size_t i = 0; i < values.size(); ++i) {
    series.points.push_back({static_cast<double>(i), values[i], i});
  }
  chart.series.push_back(series);
  return chart;
}

size_t Count(const std::string& text, const std::string& what) {
  size_t count = 0;
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; ++at) ++count;
  return count;
}

struct LabelBox {
  std::string text;
  double x, y;
};

// The texts of a class, and where they stand.
std::vector<LabelBox> LabelsOf(const std::string& svg, const std::string& kind) {
  const std::regex label("<text class=\"" + kind + "\" x=\"([^\"]*)\" y=\"([^\"]*)\">([^<]*)<");
  std::vector<LabelBox> labels;
  for (std::sregex_iterator i(svg.begin(), svg.end(), label), end; i != end; ++i) {
    labels.push_back({(*i)[3], std::stod((*i)[1]), std::stod((*i)[2])});
  }
  return labels;
}

TEST(ChartSvgTest, NoLineCrossesAGap) {
  Chart chart = CurveOf({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(Count(ChartsAsSvg("", {chart}), "<polyline"), 1u);
  chart.series[0].points[3].after_gap = true;
  EXPECT_EQ(Count(ChartsAsSvg("", {chart}), "<polyline"), 2u);
}

TEST(ChartSvgTest, WhatLiesFarOffIsAtTheEdgeOrToScale) {
  Chart chart = CurveOf({1, 2, 3, 4, 5, 6, 1e9, 5, 4});
  std::string svg = ChartsAsSvg("", {chart});
  EXPECT_EQ(Count(svg, "class=\"o\""), 1u);
  EXPECT_NE(svg.find("1 lies far off, shown at the edge: x 6, y 1000000000"), std::string::npos)
      << svg;
  chart.full_range = true;
  svg = ChartsAsSvg("", {chart});
  EXPECT_EQ(Count(svg, "class=\"o\""), 0u);
  EXPECT_EQ(svg.find("far off"), std::string::npos);
}

struct FarCase {
  const char* what;
  std::vector<ChartPoint> far;
  bool y_down;
  size_t marks;
  std::vector<std::string> labels, names;
};

// A plane of points, and some that lie far off it.
TEST(ChartSvgTest, EachEdgeTellsWhatLiesBeyond) {
  const FarCase cases[] = {
      {"left", {{-1e6, 50, 7}}, false, 1, {"-1e+06"}, {"points[7]: x -1000000, y 50"}},
      {"right", {{1e6, 50, 7}}, false, 1, {"1e+06"}, {"points[7]: x 1000000, y 50"}},
      {"above", {{50, 2e6, 7}}, false, 1, {"2e+06"}, {"points[7]: x 50, y 2000000"}},
      {"below", {{50, -2e6, 7}}, false, 1, {"-2e+06"}, {"points[7]: x 50, y -2000000"}},
      {"above, y down", {{50, -2e6, 7}}, true, 1, {"-2e+06"}, {"points[7]: x 50, y -2000000"}},
      {"a corner", {{3e6, 2e6, 7}}, false, 1, {"3e+06, 2e+06"}, {}},
      {"one place", {{-1e6, 50}, {-2e6, 50.1}}, false, 1, {"×2"}, {"2 points beyond the edge"}},
      {"two places", {{-1e6, 20}, {-2e6, 80}}, false, 2, {"-1e+06", "-2e+06"}, {}},
  };
  for (const FarCase& test : cases) {
    Chart chart;
    chart.x_name = "x";
    chart.y_name = "y";
    chart.y_down = test.y_down;
    chart.series.resize(1);
    chart.series[0].element = "points";
    for (size_t i = 0; i < 100; ++i) {
      chart.series[0].points.push_back({static_cast<double>(i), static_cast<double>(i * 37 % 100)});
    }
    for (const ChartPoint& point : test.far) chart.series[0].points.push_back(point);
    const std::string svg = ChartsAsSvg("", {chart});
    EXPECT_EQ(Count(svg, "class=\"o\""), test.marks) << test.what;
    for (const std::string& label : test.labels) {
      EXPECT_EQ(Count(svg, ">" + label + "</text>"), 1u) << test.what << svg;
    }
    for (const std::string& name : test.names) EXPECT_EQ(Count(svg, name + "<"), 1u) << test.what;
    EXPECT_NE(svg.find(test.far.size() == 1 ? "1 lies far off" : "2 lie far off"),
              std::string::npos);
    // The triangles point outwards: their tips are on the frame.
    const std::regex tip("class=\"o\" d=\"M([0-9.]+),([0-9.]+)L"),
        frame("class=\"f\" x=\"([^\"]*)\" y=\"([^\"]*)\" width=\"([^\"]*)\" height=\"([^\"]*)\"");
    std::smatch at, box;
    ASSERT_TRUE(std::regex_search(svg, at, tip) && std::regex_search(svg, box, frame));
    const double x = std::stod(at[1]), y = std::stod(at[2]), left = std::stod(box[1]),
                 top = std::stod(box[2]), right = left + std::stod(box[3]),
                 bottom = top + std::stod(box[4]);
    const double nearest = std::min(
        {std::abs(x - left), std::abs(x - right), std::abs(y - top), std::abs(y - bottom)});
    EXPECT_LT(nearest, 0.2) << test.what;
    // As small ones, and as text, they tell nothing but that.
    chart.size = ChartSize::kSmall;
    EXPECT_EQ(Count(ChartsAsSvg("", {chart}), "class=\"k\""), 0u);
    EXPECT_NE(ChartsAsText("", {chart}, 80).find("far off"), std::string::npos);
  }
}

// Of labels, numbers in cells and marks, those that have no room are left out.
TEST(ChartSvgTest, WhatHasNoRoomIsLeftOut) {
  Chart chart = CurveOf({0, 0.5, 1});
  for (int i = 0; i < 200; ++i) chart.labels.push_back({1, 0.5, "the same place", 0});
  for (int i = 0; i < 60; ++i) chart.marks.push_back({0.5, "mark " + std::to_string(i)});
  chart.marks.push_back({1000, "threshold"});
  const std::string svg = ChartsAsSvg("", {chart});
  EXPECT_GT(Count(svg, ">the same place<"), 3u);
  EXPECT_LT(Count(svg, ">the same place<"), 200u);
  EXPECT_EQ(Count(svg, "class=\"m\""), 60u);
  EXPECT_LT(Count(svg, "class=\"k\""), 60u);
  EXPECT_EQ(Count(svg, ">threshold lies outside of the drawing<"), 1u);
  EXPECT_EQ(Count(ChartsAsText("", {chart}, 80), "dotted line: threshold"), 0u);
}

TEST(ChartSvgTest, CellsHaveNumbersThatAreRead) {
  Chart chart = CurveOf({});
  chart.y_down = true;  // as in images
  const double shares[] = {0.1, 0.7, 0.9};
  for (int i = 0; i < 3; ++i) {
    chart.cells.push_back({1.0 * i, 0, i + 1.0, 1, shares[i], "cell " + std::to_string(i)});
  }
  chart.cells.push_back({0, 0, 0.01, 1, 0.5, "too wide"});
  chart.cells.push_back({0, 0, 1, 0.001, 0.5, "too high"});
  chart.cells.push_back({0, 0, 1, 1, 0.5, ""});
  const std::string svg = ChartsAsSvg("", {chart});
  EXPECT_EQ(LabelsOf(svg, "u z").size(), 1u);
  EXPECT_EQ(LabelsOf(svg, "c z").size(), 1u);
  EXPECT_EQ(LabelsOf(svg, "v z").size(), 1u);
  EXPECT_EQ(Count(svg, "too "), 0u);
  EXPECT_EQ(Count(svg, "class=\"h\""), 6u);
  // Dots as dense as the cell is dark.
  EXPECT_NE(ChartsAsText("", {chart}, 80).find("⣿"), std::string::npos);
}

// Points of a curve are seen by its lines, but where there are gaps on both sides; of few bytes,
// cells become coarser.
TEST(ChartSvgTest, SwarmsKeepLonePoints) {
  std::vector<double> values(20000);
  for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i * 7919 % 10007);
  Chart chart = CurveOf(values);
  EXPECT_EQ(Count(ChartsAsSvg("", {chart}), "class=\"s l0\""), 0u);
  chart.series[0].points[100].after_gap = chart.series[0].points[101].after_gap = true;
  EXPECT_EQ(Count(ChartsAsSvg("", {chart}), "class=\"s l0\""), 1u);
  chart.series[0].connected = false;
  const std::string fine = ChartsAsElement({chart}, 1000000),
                    coarse = ChartsAsElement({chart}, 4000);
  EXPECT_NE(fine.find("stroke-width=\"2\""), std::string::npos);
  EXPECT_EQ(coarse.find("stroke-width=\"2\""), std::string::npos);
  EXPECT_LT(coarse.size(), fine.size() / 4);
}

TEST(ChartSvgTest, ChartsOfAGroupHaveOneScale) {
  Chart low = CurveOf({0, 1}), high = CurveOf({0, 100});
  low.group = high.group = "both";
  const std::vector<ChartAxes> axes = AxesOf({low, high});
  EXPECT_EQ(axes[0].y.high(), axes[1].y.high());
  EXPECT_GT(axes[0].y.high(), 100);
}

TEST(ChartSvgTest, AMillionPointsTakeTwoMegabytesAtMost) {
  std::mt19937 random(2);
  std::normal_distribution<double> x(600, 200), y(400, 150);
  Chart chart;
  chart.same_scale = true;
  chart.series.resize(1);
  std::vector<ChartPoint>& points = chart.series[0].points;
  for (size_t i = 0; i < 1000000; ++i) points.push_back({x(random), y(random), i});
  points.push_back({1e7, 400, points.size()});
  const std::string svg = ChartsAsSvg("many", {chart});
  EXPECT_LE(svg.size(), 2000000u);
  EXPECT_EQ(Count(svg, "class=\"o\""), 1u);
  // The same over many charts, and as curves.
  std::vector<Chart> charts(300, CurveOf(std::vector<double>(4000)));
  for (Chart& small : charts) small.size = ChartSize::kSmall;
  EXPECT_LE(ChartsAsSvg("many", charts).size(), 2000000u);
}

TEST(ChartSvgTest, DrawingsWithoutRoomAreCounted) {
  Chart chart = CurveOf({});
  for (int i = 0; i < 500; ++i) chart.lines.push_back({{{0, 0}, {i + 0.25, i + 0.5}}});
  const std::string svg = ChartsAsSvg("many", std::vector<Chart>(300, chart));
  EXPECT_LE(svg.size(), 2000000u);
  EXPECT_GT(svg.size(), 1800000u);
  const size_t drawn = Count(svg, "role=\"img\"");
  EXPECT_NE(svg.find(">" + std::to_string(300 - drawn) + " of 300 drawings are left out"),
            std::string::npos);
  EXPECT_EQ(ChartsAsSvg("few", {chart, chart}).find("left out"), std::string::npos);
}

TEST(ChartSvgTest, TitleAndNotesStandAlone) {
  Chart chart;
  chart.title = "lens";
  chart.notes = {"not drawn: why"};
  chart.plot = false;
  for (const std::string& drawn : {ChartsAsSvg("", {chart}), ChartsAsText("", {chart}, 80)}) {
    EXPECT_NE(drawn.find("not drawn: why"), std::string::npos);
    EXPECT_EQ(drawn.find("class=\"f\""), std::string::npos) << drawn;  // the frames of a plot
    EXPECT_EQ(drawn.find("└"), std::string::npos) << drawn;
  }
  chart.plot = true;
  EXPECT_NE(ChartsAsSvg("", {chart}).find("class=\"f\""), std::string::npos);
  EXPECT_NE(ChartsAsText("", {chart}, 80).find("└"), std::string::npos);
}

// What is as wide as a line of pixels has room for its numbers, and says that it is not to scale.
TEST(ChartSvgTest, NarrowDrawingsAreWidened) {
  const struct {
    double width, height;
    bool widened;
  } cases[] = {{4096, 1, true}, {3, 5000, true}, {900, 100, false}, {100, 900, false}};
  for (const auto& test : cases) {
    Chart chart;
    chart.x_name = "x";
    chart.y_name = "y";
    chart.same_scale = chart.y_down = true;
    chart.area_width = test.width;
    chart.area_height = test.height;
    const std::string svg = ChartsAsSvg("", {chart});
    EXPECT_EQ(svg.find("not to scale") != std::string::npos, test.widened) << svg;
    const std::regex frame("<rect class=\"j\"[^>]* width=\"([^\"]*)\" height=\"([^\"]*)\"");
    std::smatch found;
    ASSERT_TRUE(std::regex_search(svg, found, frame));
    EXPECT_GT(std::stod(found[1]), 50);
    EXPECT_GT(std::stod(found[2]), 50);
  }
}

TEST(ChartSvgTest, LinesAndLabelsOverPointsStandOut) {
  Chart chart = CurveOf({1, 2, 3});
  chart.lines = {{{{0, 1}, {2, 3}}}};
  chart.labels = {{1, 2, "here", 0}};
  EXPECT_EQ(Count(ChartsAsSvg("", {chart}), "class=\"hl\""), 0u);
  chart.lines[0].over = true;
  const std::string svg = ChartsAsSvg("", {chart});
  const size_t ground = svg.find("class=\"hl\""), line = svg.find("class=\"l l0\" d=");
  EXPECT_LT(ground, line);
  EXPECT_LT(svg.find("<circle"), ground);
  EXPECT_NE(svg.find("<rect class=\"b\"", line), std::string::npos);  // below the label
  chart.series.clear();
  EXPECT_EQ(ChartsAsSvg("", {chart}).find("<rect class=\"b\"", line), std::string::npos);
}

TEST(ChartSvgTest, LabelsDoNotOverlap) {
  Chart chart = CurveOf({0, 1});
  const std::string name(200, 'M');
  for (int i = 0; i < 5; ++i) chart.marks.push_back({0.5 + i * 0.001, "threshold " + name});
  for (int i = 0; i < 5; ++i) chart.labels.push_back({0.1 * i, 0.2, "camera", 0});
  const std::string svg = ChartsAsSvg(name, {chart});
  std::vector<LabelBox> labels = LabelsOf(svg, "k");
  EXPECT_EQ(labels.size(), 5u);
  for (const LabelBox& label : LabelsOf(svg, "e")) labels.push_back(label);
  EXPECT_EQ(labels.size(), 10u);
  for (size_t i = 0; i < labels.size(); ++i) {
    const double end = labels[i].x + TextWidth(labels[i].text, 12);
    EXPECT_LE(end, 808) << labels[i].text;
    for (size_t j = 0; j < i; ++j) {
      const bool beside =
          end <= labels[j].x || labels[j].x + TextWidth(labels[j].text, 12) <= labels[i].x;
      EXPECT_TRUE(beside || std::abs(labels[i].y - labels[j].y) >= 11) << i << " and " << j;
    }
  }
}

TEST(ChartSvgTest, TextIsEscaped) {
  Chart chart = CurveOf({1, 2});
  const std::string hostile = "\"><script>alert(1)</script>&'\x01";
  chart.title = chart.x_name = chart.y_name = chart.heading = hostile;
  chart.notes = {hostile};
  chart.series[0].name = chart.series[0].element = hostile;
  chart.marks = {{1.5, hostile}};
  chart.labels = {{1, 1, hostile, 0}};
  chart.cells = {{0, 1, 1, 2, 0.5, hostile}};
  chart.area_width = chart.area_height = 1;
  const std::string svg = ChartsAsSvg(hostile, {chart});
  EXPECT_EQ(Count(svg, "<script"), 0u);
  EXPECT_EQ(Count(svg, "\"\""), 0u) << svg;
  EXPECT_EQ(Count(svg, "\x01"), 0u);
}

struct OverlayCase {
  const char* what;
  std::vector<double> after, before;
  std::vector<double> difference;
  const char* note;
};

TEST(OverlayTest, CurvesHaveTheirDifferenceBelow) {
  const OverlayCase cases[] = {{"alike", {1, 2}, {1, 2}, {0, 0}, "no difference"},
                               {"changed", {1, 5}, {1, 2}, {0, 3}, "largest 3 at values[1]"},
                               {"less", {1, 2, 3}, {3}, {-2}, "largest -2 at values[0]"},
                               {"nothing", {1}, {}, {}, "nothing that both have"}};
  for (const OverlayCase& test : cases) {
    const std::vector<Chart> charts =
        Overlay({CurveOf(test.after)}, "new", {CurveOf(test.before)}, "old");
    ASSERT_EQ(charts.size(), 2u) << test.what;
    EXPECT_EQ(charts[0].series[0].name, "new");
    EXPECT_TRUE(charts[0].series[1].second);
    std::vector<double> difference;
    for (const ChartPoint& point : charts[1].series[0].points) difference.push_back(point.y);
    EXPECT_EQ(difference, test.difference) << test.what;
    EXPECT_EQ(charts[1].notes[0], test.note);
  }
}

// What lies between values that both have is not known of either.
TEST(OverlayTest, DifferencesKeepGaps) {
  Chart after = CurveOf({1, 2, 3, 4, 5, 6}), before = CurveOf({1, 1, 1, 1, 1, 1});
  after.series[0].points[4].after_gap = true;
  before.series[0].points.erase(before.series[0].points.begin() + 2);
  after.series[0].points.erase(after.series[0].points.begin());
  const std::vector<Chart> charts = Overlay({after}, "new", {before}, "old");
  ASSERT_EQ(charts.size(), 2u);
  std::string told;
  for (const ChartPoint& point : charts[1].series[0].points) {
    told += (point.after_gap ? "| " : "") + RoundedText(point.x) + ":" + RoundedText(point.y) + " ";
  }
  EXPECT_EQ(told, "1:1 | 3:3 | 4:4 5:5 ");
}

// A chart shows things in space from one side; how far they have moved and turned is told of all
// that both have.
TEST(OverlayTest, PosesHaveTheirDifferencesBelow) {
  Chart after, before;
  after.title = before.title = "from above";
  after.poses.whole = "rig";
  after.poses.element = "camera";
  using zarvo::calibration_geometry::Transform;
  const Transform moved = {{1, 0, 0, 3, 0, 1, 0, 4, 0, 0, 1, 12, 0, 0, 0, 1}};
  const Transform turned = {{0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
  after.poses.poses = {{0, moved}, {1, Transform()}, {3, turned}};
  before.poses.poses = {{0, Transform()}, {2, Transform()}, {3, Transform()}};
  const std::vector<Chart> charts = Overlay({after}, "new", {before}, "old");
  ASSERT_EQ(charts.size(), 3u);
  const char* const notes[] = {"largest 13 at camera[0]", "largest 90 at camera[3]"};
  for (size_t i = 0; i < 2; ++i) {
    const Chart& chart = charts[i + 1];
    EXPECT_EQ(chart.title, i == 0 ? "rig: moved" : "rig: turned");
    EXPECT_EQ(chart.notes, std::vector<std::string>{notes[i]});
    ASSERT_EQ(chart.series[0].points.size(), 2u);
    EXPECT_EQ(chart.series[0].points[1].index, 3u);
    EXPECT_NEAR(chart.series[0].points[0].y, i == 0 ? 13 : 0, 1e-12);
    EXPECT_NEAR(chart.series[0].points[1].y, i == 0 ? 0 : 90, 1e-12);
  }
  EXPECT_EQ(Overlay({after}, "new", {Chart(after)}, "old")[2].notes[0], "no difference");
  before.poses.poses.clear();
  EXPECT_EQ(Overlay({after}, "new", {before}, "old").size(), 1u);
}

TEST(OverlayTest, TellsVerdictsMarksAndHeadings) {
  const struct {
    Verdict verdict;
    const char* word;
  } verdicts[] = {{Verdict::kPassed, "in old: ok"},
                  {Verdict::kFailed, "in old: failed"},
                  {Verdict::kNone, "in old: no verdict"}};
  for (const auto& then : verdicts) {
    for (const auto& now : verdicts) {
      Chart after = CurveOf({1, 2}), before = after;
      after.verdict = now.verdict;
      before.verdict = then.verdict;
      after.heading = "2 ok";
      before.heading = "1 ok";
      after.marks = {{1.5, "limit"}, {2, "low"}};
      before.marks = {{1.5, "limit"}, {1.2, "low"}, {2, "high"}};
      after.notes = {"both"};
      before.notes = {"both", "before"};
      const std::vector<Chart> charts = Overlay({after}, "new", {before}, "old");
      std::vector<std::string> notes = {"both", "in old: before"};
      if (&now != &then) notes.insert(notes.begin() + 1, then.word);
      EXPECT_EQ(charts[0].notes, notes);
      EXPECT_EQ(charts[0].heading, "new: 2 ok; dashed, old: 1 ok");
      ASSERT_EQ(charts[0].marks.size(), 4u);
      EXPECT_EQ(charts[0].marks[2].label, "low in old");
      EXPECT_EQ(charts[0].marks[3].label, "high in old");
    }
  }
}

// Their differences stand in a row below those of their row.
TEST(OverlayTest, SmallOnesStandInRows) {
  std::vector<Chart> after, before;
  for (int i = 0; i < 6; ++i) {
    Chart chart = CurveOf({1, 2});
    chart.title = "spot " + std::to_string(i);
    chart.size = ChartSize::kSmall;
    chart.group = "bins";
    if (i == 5) chart.heading = "others";
    after.push_back(chart);
    chart.marks = {{1, "limit"}};
    before.push_back(chart);
  }
  Chart lines = CurveOf({});
  lines.title = "no points";
  lines.series.clear();
  lines.lines = {{{{0, 0}, {1, 1}}}};
  lines.labels = {{1, 1, "cam0", 0}};
  after.push_back(lines);
  lines.labels.push_back({0, 0, "cam1", 0});
  before.push_back(lines);
  std::string titles;
  for (const Chart& chart : Overlay(after, "new", before, "old")) {
    titles += chart.title + (chart.group.empty() ? "" : " (" + chart.group + ")") + "\n";
    EXPECT_TRUE(chart.marks.empty()) << chart.title;
    for (const ChartSeries& series : chart.series) EXPECT_EQ(series.name, "");
    EXPECT_EQ(chart.labels.size(), chart.title == "no points" ? 2u : 0u);
    EXPECT_TRUE(chart.lines.empty() || (chart.lines[1].dashed && !chart.lines[0].dashed));
  }
  std::string expected;
  for (const auto& row : {std::vector<int>{0, 1, 2, 3}, {4}, {5}}) {
    for (const char* kind : {" (bins)\n", ": difference (bins difference)\n"}) {
      for (const int i : row) expected += "spot " + std::to_string(i) + kind;
    }
  }
  EXPECT_EQ(titles, expected + "no points\n");
}

// Of a curve and what it is compared with, only the curve is drawn twice.
TEST(OverlayTest, LeavesOutWhatACurveIsComparedWith) {
  Chart after = CurveOf({0, 2, 5}), before = CurveOf({0, 1, 3});
  for (Chart* chart : {&after, &before}) {
    chart->series[0].smooth = true;
    chart->series.push_back(chart->series[0]);
    chart->series[1].second = true;
    chart->series[1].points[2].y = 99;
  }
  const std::vector<Chart> charts = Overlay({after}, "new", {before}, "old");
  ASSERT_EQ(charts[0].series.size(), 2u);
  EXPECT_EQ(charts[0].series[1].points.size(), 3u);
  ASSERT_EQ(charts[1].series[0].points.size(), 3u);
  EXPECT_EQ(charts[1].series[0].points[2].y, 2);
  EXPECT_TRUE(charts[1].series[0].smooth);
  EXPECT_EQ(charts[1].notes[0], "largest 2 at 2");
}

TEST(OverlayTest, WhatHasOtherAxesStandsBeside) {
  Chart after = CurveOf({1, 2}), before = CurveOf({3, 4});
  before.x_name = "−y of the body";
  const std::vector<Chart> charts = Overlay({after}, "new", {before}, "old");
  ASSERT_EQ(charts.size(), 2u);
  EXPECT_EQ(charts[0].heading, "curve");
  EXPECT_EQ(charts[0].title, "new");
  EXPECT_EQ(charts[1].title, "old");
  EXPECT_EQ(charts[1].x_name, "−y of the body");
  EXPECT_EQ(charts[0].size, ChartSize::kHalf);
}

TEST(OverlayTest, TellsWhichLinesAreWhose) {
  Chart after;
  after.title = "rig";
  after.lines = {{{{0, 0}, {1, 1}}}};
  const std::vector<Chart> charts = Overlay({after}, "new", {after}, "old");
  EXPECT_EQ(charts[0].notes, std::vector<std::string>{"dashed and in another color: old"});
}

TEST(OverlayTest, TellsWhatOnlyOneHas) {
  Chart other = CurveOf({1});
  other.title = "another";
  const std::vector<Chart> charts = Overlay({CurveOf({1})}, "new", {other}, "old");
  ASSERT_EQ(charts.size(), 2u);
  EXPECT_EQ(charts[0].notes, std::vector<std::string>{"only in new"});
  EXPECT_EQ(charts[1].notes, std::vector<std::string>{"only in old"});
}

TEST(OverlayTest, PointsAreComparedByTheirIndex) {
  Chart after = CurveOf({1, 2, 3}), before = CurveOf({1, 2, 5});
  after.series[0].connected = before.series[0].connected = false;
  before.series[0].points.erase(before.series[0].points.begin());
  const std::vector<Chart> charts = Overlay({after}, "new", {before}, "old");
  ASSERT_EQ(charts.size(), 2u);
  ASSERT_EQ(charts[1].series[0].points.size(), 2u);
  EXPECT_EQ(charts[1].series[0].points[1].y, -2);
  EXPECT_EQ(charts[1].notes[0], "largest 2 at values[2]");
}

TEST(TickTextsTest, HaveTheDigitsThatMatter) {
  EXPECT_EQ(TickTexts({0, 1000000, 2000000}),
            (std::vector<std::string>{"0", "1000000", "2000000"}));
  EXPECT_EQ(TickTexts({0.1, 0.2, 0.1 + 0.2}), (std::vector<std::string>{"0.1", "0.2", "0.3"}));
  EXPECT_EQ(TickTexts({1234567.1, 1234567.2}),
            (std::vector<std::string>{"1234567.1", "1234567.2"}));
}

}  // namespace
}  // namespace calib
