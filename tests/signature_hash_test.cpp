// The signature hash and the badge (padlock and hash text) printed on exports.
#include "export/signature_hash.h"

#include <scrivlet/scrivlet_controller.h>

#include "platform/format.h"
#include "platform/headless/headless_view.h"
#include "platform/image.h"
#include "platform/recording_context.h"
#include "render/combo_context.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace scrivlet {
namespace {

std::shared_ptr<QnScrivletController> makeController() {
  return QnScrivletController::create(HeadlessView::create(makeRect(0, 0, 300, 200)), {}, {});
}

// The padlock in glyph units: 'M' move, 'L' line, 'C' curve (control, control, end), 'Z' close.
struct GlyphCommand {
  char kind;
  std::vector<double> xy;
};
const std::vector<GlyphCommand> kPadlock = {
    {'M', {13.49, 8.33}}, {'L', {12.75, 8.33}}, {'L', {12.75, 5.39}},
    {'C', {12.75, 2.42, 10.32, 0.0, 7.34, 0.0}}, {'C', {4.35, 0.0, 1.93, 2.42, 1.93, 5.39}},
    {'L', {1.93, 8.33}}, {'L', {1.51, 8.33}}, {'C', {0.68, 8.33, 0.0, 9.01, 0.0, 9.84}},
    {'L', {0.0, 18.5}}, {'C', {0.0, 19.33, 0.68, 20.0, 1.51, 20.0}}, {'L', {13.49, 20.0}},
    {'C', {14.32, 20.0, 15.0, 19.33, 15.0, 18.5}}, {'L', {15.0, 9.84}},
    {'C', {15.0, 9.01, 14.32, 8.33, 13.49, 8.33}}, {'Z', {}},
    {'M', {8.12, 14.13}}, {'L', {8.55, 16.57}}, {'L', {7.5, 16.57}}, {'L', {6.45, 16.57}},
    {'L', {6.88, 14.13}}, {'C', {6.57, 13.93, 6.37, 13.58, 6.37, 13.19}},
    {'C', {6.37, 12.57, 6.87, 12.06, 7.5, 12.06}}, {'C', {8.12, 12.06, 8.63, 12.57, 8.63, 13.19}},
    {'C', {8.63, 13.58, 8.41, 13.91, 8.11, 14.11}}, {'L', {8.12, 14.13}}, {'Z', {}},
    {'M', {10.46, 8.33}}, {'L', {4.22, 8.33}}, {'L', {4.22, 5.39}},
    {'C', {4.22, 3.67, 5.62, 2.28, 7.34, 2.28}}, {'C', {9.06, 2.28, 10.46, 3.67, 10.46, 5.39}},
    {'L', {10.46, 8.33}}, {'Z', {}},
};

const double kGrey = static_cast<double>(0.96f);
const std::vector<double> kBadgeColour{kGrey, kGrey, kGrey, 1.0};

std::vector<double> rgba(std::vector<double> c) {
  return c.size() == 2 ? std::vector<double>{c[0], c[0], c[0], c[1]} : c;
}

TEST(SignatureHash, TenFreshHexDigitsUnlessACustomHashIsSet) {
  auto c = makeController();
  EXPECT_FALSE(c->lastHash().has_value());
  std::set<std::string> seen;
  for (int i = 0; i < 20; ++i) {
    c->createAndStoreHashString();
    ASSERT_TRUE(c->lastHash().has_value());
    const std::string& h = *c->lastHash();
    EXPECT_EQ(h.size(), 10u) << h;
    EXPECT_EQ(h.find_first_not_of("0123456789abcdef"), std::string::npos) << h;
    seen.insert(h);
  }
  EXPECT_EQ(seen.size(), 20u);
  for (const std::string& custom : std::vector<std::string>{"", "Ab-12 <&>", std::string("x\0y", 3)}) {
    SCOPED_TRACE("custom hash \"" + custom + "\"");
    c->setCustomHash(custom);
    c->createAndStoreHashString();
    EXPECT_EQ(c->lastHash(), std::optional<std::string>(custom));
  }
  c->setCustomHash(std::nullopt);
  c->createAndStoreHashString();
  EXPECT_EQ(c->lastHash()->size(), 10u);
}

TEST(SignatureHash, RasterBadgeIsAShadowedLightPadlockThenTheText) {
  struct Case {
    bool showDate;
    double canvasHeight, dateSize;
    float fontSize, opacity;
    double y;  // the badge's baseline row
  } cases[] = {{false, 120, 20, 23, 0.9f, 113}, {true, 120, 20, 23, 0.9f, 92},
               {true, 80.5, 12, 30, 0.5f, 60.5}};
  for (const Case& k : cases) {
    SCOPED_TRACE(testing::Message() << "date " << k.showDate << ", height " << k.canvasHeight);
    auto c = makeController();
    c->setLastHash("0123abcdef");
    c->setExportHashFontSize(k.fontSize);
    c->setExportHashOpacity(k.opacity);
    RecordingContext recording;
    QnComboContext combo(&recording);
    renderHashWithContext(&combo, k.showDate, c.get(), k.canvasHeight, k.dateSize);

    std::vector<RecordingContext::Call> state;  // everything but the path and its beginning
    std::vector<GlyphCommand> path;
    for (const auto& call : recording.calls()) {
      if (call.name == "moveToPoint") path.push_back({'M', call.args});
      else if (call.name == "addLineToPoint") path.push_back({'L', call.args});
      else if (call.name == "addCurveToPoint") path.push_back({'C', call.args});
      else if (call.name == "closePath") path.push_back({'Z', {}});
      else if (call.name != "beginPath") state.push_back(call);
    }
    ASSERT_EQ(path.size(), kPadlock.size());
    for (size_t i = 0; i < path.size(); ++i) {
      EXPECT_EQ(path[i].kind, kPadlock[i].kind) << i;
      EXPECT_EQ(path[i].xy, kPadlock[i].xy) << i;
    }
    std::vector<std::string> names;
    for (const auto& call : state) names.push_back(call.name);
    ASSERT_EQ(names, (std::vector<std::string>{"setTextDrawingMode", "setFillColor", "setStrokeColor",
                                               "setShadow", "setAlpha", "saveGState", "translateCTM",
                                               "setFillColor", "drawPath", "restoreGState",
                                               "showText"}));
    EXPECT_EQ(state[0].args, std::vector<double>{kQnTextFill});
    EXPECT_EQ(rgba(state[1].args), kBadgeColour);
    EXPECT_EQ(rgba(state[2].args), kBadgeColour);
    ASSERT_GE(state[3].args.size(), 3u);
    EXPECT_EQ(std::vector<double>(state[3].args.begin(), state[3].args.begin() + 3),
              (std::vector<double>{2, 2, 0}));
    EXPECT_EQ(rgba({state[3].args.begin() + 3, state[3].args.end()}),
              (std::vector<double>{0, 0, 0, 0.2}));
    EXPECT_EQ(state[4].args, std::vector<double>{static_cast<double>(k.opacity)});
    EXPECT_EQ(state[6].args, (std::vector<double>{4, k.y - 20}));
    std::vector<double> lockFill = rgba(state[7].args);
    ASSERT_EQ(lockFill.size(), 4u);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(lockFill[i], 0.96, 1e-7);
    EXPECT_EQ(lockFill[3], 1.0);
    EXPECT_EQ(state[8].args, std::vector<double>{kQnPathFill});
    EXPECT_EQ(state[10].text, "0123abcdef");
    std::vector<double> text{22, k.y - k.fontSize + 1, k.fontSize};
    text.insert(text.end(), kBadgeColour.begin(), kBadgeColour.end());
    EXPECT_EQ(state[10].args, text);
  }
}

// The padlock's SVG path data with the glyph moved by (dx, dy).
std::string padlockPathData(double dx, double dy) {
  std::string d;
  for (const GlyphCommand& g : kPadlock) {
    if (g.kind == 'Z') {
      d += "Z";
      continue;
    }
    d += g.kind;
    for (size_t i = 0; i < g.xy.size(); ++i) d += cformat(" %f", g.xy[i] + (i % 2 ? dy : dx));
    d += " ";
  }
  return d;
}

TEST(SignatureHash, SVGBadgeIsGreyTextAndPadlock) {
  struct Case {
    bool showDate;
    double canvasHeight, dateSize;
    std::string hash, textY, pathPrefix;
    double dy;
  } cases[] = {
      {false, 120, 20, "0123abcdef", "96.000000", "M 17.490000 101.330000 L 16.750000 101.330000 ", 93},
      {true, 120.5, 20, "", "75.500000", "M 17.490000 80.830000 L 16.750000 80.830000 ", 72.5},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(testing::Message() << "date " << k.showDate << ", hash \"" << k.hash << "\"");
    auto c = makeController();
    c->setCustomHash(k.hash);
    c->createAndStoreHashString();
    QnComboContext svg(nullptr);
    svg.setIsSVG(true);
    svg.setScaleCTMXY(1, 1);
    svg.beginPath();
    renderHashWithContext(&svg, k.showDate, c.get(), k.canvasHeight, k.dateSize);
    ASSERT_EQ(svg.pathArray().size(), 2u);
    EXPECT_EQ(svg.pathArray()[0],
              "<text x=\"22.000000\" y=\"" + k.textY +
                  "\" font-family=\"Helvetica,sans-serif\" font-weight=\"bold\" "
                  "dominant-baseline=\"hanging\" font-size=\"23.000000\"  fill=\"#A6A6A6\" "
                  "opacity=\"0.470000\">" + k.hash + "</text>");
    const std::string& path = svg.pathArray()[1];
    EXPECT_EQ(path.rfind("<path d=\"" + k.pathPrefix, 0), 0u) << path;
    EXPECT_EQ(path, "<path d=\"" + padlockPathData(4, k.dy) +
                        "\" fill=\"#A6A6A6\"  opacity=\"0.470000\" />");
    EXPECT_EQ(svg.translate(), (QnPoint{0, 0}));
    EXPECT_EQ(svg.opacity(), 1.0);
  }
  SCOPED_TRACE("nothing to draw with or for");
  auto c = makeController();
  QnComboContext bare(nullptr);
  renderHashWithContext(nullptr, false, c.get(), 100, 20);
  renderHashWithContext(&bare, false, nullptr, 100, 20);
  renderHashWithContext(&bare, true, c.get(), 100, 20);  // raster without a context, no hash yet
  EXPECT_TRUE(bare.pathArray().empty());
}

TEST(SignatureHash, BadgePixelsShowALightPadlockWithHolesAndAShadow) {
  auto c = makeController();
  c->setLastHash("0123abcdef");
  QnBitmapContext bitmap({260, 40}, 2);
  bitmap.context().setFillColor(QnColor(0.15, 1));
  bitmap.context().fillRect(makeRect(0, 0, 260, 40));
  QnComboContext combo(&bitmap.context());
  // Baseline row 33: the padlock's top-left corner at (4, 13), the text's at (22, 11).
  renderHashWithContext(&combo, false, c.get(), 40, 20);
  QnImage image = bitmap.makeImage();
  std::filesystem::create_directories(SCRIVLET_TEST_OUTPUT_DIR);
  std::vector<uint8_t> png = image.encodePNG();
  std::ofstream(std::string(SCRIVLET_TEST_OUTPUT_DIR) + "/hash_badge.png", std::ios::binary)
      .write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));

  auto red = [&](double x, double y) { return int(image.pixelAt(int(x * 2), int(y * 2)).r); };
  const int background = red(1, 1);
  EXPECT_EQ(background, 38);
  EXPECT_GT(red(7, 28), 215);      // body
  EXPECT_GT(red(7, 18.39), 215);   // left bar of the shackle
  EXPECT_LT(red(11.5, 26.19), 60);  // keyhole
  EXPECT_LT(red(11.34, 19), 60);    // inside the shackle
  EXPECT_LT(red(20.5, 25), background - 3);  // the shadow, two points right of the body
  EXPECT_EQ(red(2, 25), background);         // nothing left of the padlock
  int lightText = 0;
  for (int y = 22; y < 68; ++y)
    for (int x = 44; x < 320; ++x) lightText += image.pixelAt(x, y).r > 200;
  EXPECT_GT(lightText, 400);
  EXPECT_EQ(red(200, 20), background);  // past the end of the text
}

}  // namespace
}  // namespace scrivlet
