// Strokes saved as JSON: the documented form, a bit-exact round trip, and refused documents.
#include <scrivlet/stroke_json.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace scrivlet {
namespace {

QnStrokeListRef listOf(std::vector<QnStroke> strokes) {
  auto list = std::make_shared<QnStrokeList>();
  for (auto& s : strokes) list->push_back(std::make_shared<QnStroke>(std::move(s)));
  return list;
}

TEST(StrokeJson, OnePointIsWrittenAsDocumented) {
  QnSignaturePoint p;
  p.location = {1.5, 2}, p.velocity = {-0.25, 0}, p.acceleration = {4, 8}, p.timestamp = 10.125;
  p.azimuthAngle = 0.5f, p.altitudeAngle = 1.5f, p.pressure = 0.25f, p.diameter = 3, p.id = 100;
  EXPECT_EQ(strokesToJson(listOf({{p}, {}})),
            R"({"format":"scrivlet-strokes","strokes":[[{"altitude":1.5,"ax":4.0,"ay":8.0,"azimuth":0.5,)"
            R"("diameter":3.0,"id":100,"pressure":0.25,"t":10.125,"vx":-0.25,"vy":0.0,"x":1.5,"y":2.0}],[]],)"
            R"("version":1})");
  EXPECT_EQ(strokesToJson(nullptr), R"({"format":"scrivlet-strokes","strokes":[],"version":1})");
}

TEST(StrokeJson, EveryFieldReadsBackToTheSameBits) {
  const double kMin = std::numeric_limits<double>::denorm_min();
  QnStroke first, second;
  for (int i = 0; i < 50; ++i) {
    QnSignaturePoint p;
    p.location = {0.1 * i + 1.0 / 3, -0.0 + 1e5 / (i + 7)};
    p.velocity = {i == 3 ? std::nan("") : std::sqrt(2.0) * i, i == 4 ? -INFINITY : 1e300 / (i + 1)};
    p.acceleration = {kMin * i, -1e-308 * i};
    p.timestamp = 86400.0 * 365 + i / 240.0;
    p.azimuthAngle = 3.1111114f * i, p.altitudeAngle = 1.5707964f, p.pressure = 1.0f / (i + 3);
    p.diameter = 0.5999999f + i, p.id = (uint64_t(1) << 63) + i;
    (i < 30 ? first : second).push_back(p);
  }
  QnStrokeListRef back = strokesFromJson(strokesToJson(listOf({first, {}, second})));
  ASSERT_TRUE(back && back->size() == 3 && back->at(1)->empty());
  auto bits = [](const QnSignaturePoint& p) {
    return std::tuple(std::bit_cast<uint64_t>(p.location.x), std::bit_cast<uint64_t>(p.location.y),
                      std::isnan(p.velocity.x) ? 1 : std::bit_cast<uint64_t>(p.velocity.x),
                      std::bit_cast<uint64_t>(p.velocity.y), std::bit_cast<uint64_t>(p.acceleration.x),
                      std::bit_cast<uint64_t>(p.acceleration.y), std::bit_cast<uint64_t>(p.timestamp),
                      std::bit_cast<uint32_t>(p.azimuthAngle), std::bit_cast<uint32_t>(p.altitudeAngle),
                      std::bit_cast<uint32_t>(p.pressure), std::bit_cast<uint32_t>(p.diameter), p.id);
  };
  for (auto [original, read] : {std::pair(first, *back->at(0)), std::pair(second, *back->at(2))}) {
    ASSERT_EQ(original.size(), read.size());
    for (size_t i = 0; i < read.size(); ++i) EXPECT_EQ(bits(original[i]), bits(read[i])) << i;
  }
}

TEST(StrokeJson, AnythingButAStrokesDocumentIsRefusedWithOneLine) {
  const std::string point = R"({"x":1,"y":2,"vx":0,"vy":0,"ax":0,"ay":0,"t":0,"azimuth":0,"altitude":0,)"
                            R"("pressure":0,"diameter":0,"id":1})";
  auto document = [](const std::string& strokes, const std::string& head = R"("format":"scrivlet-strokes","version":1)") {
    return "{" + head + R"(,"strokes":)" + strokes + "}";
  };
  ASSERT_TRUE(strokesFromJson(document("[[" + point + "]]")));
  std::string noX = point;
  noX.replace(noX.find(R"("x":1,)"), 6, "");
  std::string nanY = point;
  nanY.replace(nanY.find(R"("y":2)"), 5, R"("y":"NaN")");
  for (const std::string& bad :
       {std::string(""), std::string("[1, 2]"), std::string("{\"format\": \"other\"}"), document("[[" + point + "]]").substr(0, 40),
        document("[[" + point + "]]", R"("format":"scrivlet-strokes","version":2)"), document("{}"), document("[[3]]"),
        document("[" + point + "]"), document("[[" + noX + "]]"), document("[[" + nanY + "]]"),
        document("[[" + std::string(point).replace(point.find(R"("id":1)"), 6, R"("id":-1)") + "]]")}) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(strokesFromJson(bad), nullptr) << bad;
    std::string said = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(said.starts_with("Scrivlet: no strokes loaded from JSON: ") && std::count(said.begin(), said.end(), '\n') == 1)
        << said;
  }
}

}  // namespace
}  // namespace scrivlet
