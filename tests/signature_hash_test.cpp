// The signature hash and the badge (padlock and hash text) printed on exports.
#include "export/signature_hash.h"

#include "controller/controller_exports.h"

#include <cctype>
#include <algorithm>
#include <set>
#include <sstream>

#include "export_fixture.h"
#include "platform/format.h"
#include "platform/image.h"
#include "platform/recording_context.h"
#include "render/combo_context.h"

namespace scrivlet::export_test {
namespace {

// The padlock in glyph units: M move, L line, C curve (control, control, end), Z close.
const char* const kPadlock =
    "M 13.49 8.33 L 12.75 8.33 L 12.75 5.39 C 12.75 2.42 10.32 0.0 7.34 0.0 C 4.35 0.0 1.93 2.42 "
    "1.93 5.39 L 1.93 8.33 L 1.51 8.33 C 0.68 8.33 0.0 9.01 0.0 9.84 L 0.0 18.5 C 0.0 19.33 0.68 "
    "20.0 1.51 20.0 L 13.49 20.0 C 14.32 20.0 15.0 19.33 15.0 18.5 L 15.0 9.84 C 15.0 9.01 14.32 "
    "8.33 13.49 8.33 Z M 8.12 14.13 L 8.55 16.57 L 7.5 16.57 L 6.45 16.57 L 6.88 14.13 C 6.57 "
    "13.93 6.37 13.58 6.37 13.19 C 6.37 12.57 6.87 12.06 7.5 12.06 C 8.12 12.06 8.63 12.57 8.63 "
    "13.19 C 8.63 13.58 8.41 13.91 8.11 14.11 L 8.12 14.13 Z M 10.46 8.33 L 4.22 8.33 L 4.22 5.39 "
    "C 4.22 3.67 5.62 2.28 7.34 2.28 C 9.06 2.28 10.46 3.67 10.46 5.39 L 10.46 8.33 Z";

// The padlock moved by (dx, dy) as SVG path data: each number in the format, a space after each
// command's numbers.
std::string padlockPathData(double dx, double dy, const char* format = " %f") {
  std::istringstream in(kPadlock);
  std::string d, token;
  for (int n = 0; in >> token;)  // n: numbers since the last command letter
    if (std::isalpha(token[0])) d += (n ? " " : "") + token, n = 0;
    else d += cformat(format, std::stod(token) + (n++ % 2 ? dy : dx));
  return d;
}

using SignatureHash = ControllerTest;

TEST_F(SignatureHash, TenFreshHexDigitsUnlessACustomHashIsSet) {
  EXPECT_FALSE(c->lastHash());
  std::set<std::string> seen;
  for (int i = 0; i < 20; ++i) c->createAndStoreHashString(), seen.insert(c->lastHash().value_or(""));
  EXPECT_EQ(seen.size(), 20u);
  for (auto& h : seen) EXPECT_TRUE(h.size() == 10 && h.find_first_not_of("0123456789abcdef") == h.npos) << h;
  using Text = std::optional<std::string>;
  for (const Text& custom : {Text(""), Text("Ab-12 <&>"), Text()}) {  // none: fresh again
    c->setCustomHash(custom), c->createAndStoreHashString();
    EXPECT_TRUE(custom ? c->lastHash() == custom : c->lastHash().value_or("").size() == 10);
  }
}

TEST_F(SignatureHash, BadgeIsAShadowedLightPadlockWithHolesThenTheTextOrGreyInSVG) {
  QnComboContext bare(nullptr);  // nothing to draw with or for, and no hash yet
  renderHashWithContext(nullptr, false, c.get(), 100, 20), renderHashWithContext(&bare, false, nullptr, 100, 20);
  renderHashWithContext(&bare, true, c.get(), 100, 20);
  EXPECT_TRUE(bare.pathArray().empty());
  // At the default size and opacity: a light padlock with holes and a shadow.
  c->setLastHash("0123abcdef");
  QnBitmapContext bitmap({260, 40}, 2);
  bitmap.context().setFillColor(QnColor(0.15, 1)), bitmap.context().fillRect(makeRect(0, 0, 260, 40));
  QnComboContext combo(&bitmap.context());
  renderHashWithContext(&combo, false, c.get(), 40, 20);  // the padlock's corner at (4, 13)
  QnImage image = bitmap.makeImage();
  test_support::savePNG(image, "hash_badge.png");
  auto red = [&](double x, double y) { return int(image.pixelAt(int(x * 2), int(y * 2)).r); };
  EXPECT_EQ(red(1, 1), 38);                  // background
  EXPECT_GT(red(7, 28), 215);                // body
  EXPECT_LT(red(11.5, 26.19), 60);           // keyhole
  EXPECT_LT(red(11.34, 19), 60);             // inside the shackle
  EXPECT_LT(red(20.5, 25), 38 - 3);          // the shadow, two points right of the body
  EXPECT_EQ(red(2, 25), 38);                 // nothing left of the padlock
  const std::string kinds[] = {"moveToPoint", "addLineToPoint", "addCurveToPoint", "closePath"};  // M, L, C, Z
  const double grey = static_cast<double>(0.96f);
  // y: the badge's baseline row, the canvas height less 7, or less the date size and 8. svgY and
  // svgSize: the SVG text's row (t + 5, where t = y - font size + 1) and size.
  struct Case { bool showDate; double height, dateSize, fontSize, opacity, y; std::string hash, svgY, svgSize; };
  for (const Case& k : {Case{false, 120, 20, 23, 0.9f, 113, "0123abcdef", "96.000000", "23.000000"},
                        Case{true, 80.5, 12, 30, 0.5f, 60.5, "", "36.500000", "30.000000"}}) {
    SCOPED_TRACE(testing::Message() << "date " << k.showDate);
    c->setLastHash(k.hash), c->setExportHashFontSize(k.fontSize), c->setExportHashOpacity(k.opacity);
    RecordingContext recording;
    QnComboContext raster(&recording);
    renderHashWithContext(&raster, k.showDate, c.get(), k.height, k.dateSize);
    std::string path;  // the padlock as SVG path data with exact numbers
    std::vector<std::pair<std::string, std::vector<double>>> state;  // every other call
    for (const RecordingContext::Call& call : recording.calls())
      if (auto kind = std::ranges::find(kinds, call.name) - kinds; kind < 4) {
        path += "MLCZ"[kind];
        for (double a : call.args) path += cformat(" %.17g", a);
        path += kind == 3 ? "" : " ";
      } else if (call.name != "beginPath") state.push_back({call.name, call.args});
    EXPECT_EQ(path, padlockPathData(0, 0, " %.17g"));
    ASSERT_EQ(state.size(), 11u);
    for (double& a : state[7].second) a = std::round(a * 1e7) / 1e7;  // the padlock's white 0.96
    EXPECT_EQ(state, (decltype(state){
        {"setTextDrawingMode", {kQnTextFill}}, {"setFillColor", {grey, grey, grey, 1}},
        {"setStrokeColor", {grey, grey, grey, 1}}, {"setShadow", {2, 2, 0, 0, 0, 0, 0.2}},
        {"setAlpha", {k.opacity}}, {"saveGState", {}}, {"translateCTM", {4, k.y - 20}},
        {"setFillColor", {0.96, 1}}, {"drawPath", {kQnPathFill}}, {"restoreGState", {}},
        {"showText", {22, k.y - k.fontSize + 1, k.fontSize, grey, grey, grey, 1}}}));
    EXPECT_EQ(recording.calls().back().text, k.hash);

    QnComboContext svg(nullptr);
    svg.setIsSVG(true), svg.setScaleCTMXY(1, 1), svg.beginPath();
    renderHashWithContext(&svg, k.showDate, c.get(), k.height, k.dateSize);
    EXPECT_EQ(svg.pathArray(), (std::vector<std::string>{
        R"(<text x="22.000000" y=")" + k.svgY + R"(" font-family="Helvetica,sans-serif" font-weight="bold" )"
        R"(dominant-baseline="hanging" font-size=")" + k.svgSize + R"("  fill="#A6A6A6" opacity="0.470000">)" + k.hash +
        "</text>", R"(<path d=")" + padlockPathData(4, k.y - 20) + R"(" fill="#A6A6A6"  opacity="0.470000" />)"}));
    EXPECT_TRUE(svg.translate() == (QnPoint{0, 0}) && svg.opacity() == 1.0);
  }
}

}  // namespace
}  // namespace scrivlet::export_test
