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
