// Strokes saved as JSON: refused documents, and a stored document (NaN, infinities, -0, the largest id,
// floats and doubles) read to the bit and written again to the byte.
#include <scrivlet/stroke_json.h>

#include <gtest/gtest.h>

#include "output_support.h"

#include <bit>
#include <cmath>

namespace scrivlet {
namespace {

// Every field of a point as its bits (any NaN velocity as 1).
auto bits(const QnSignaturePoint& p) {
  return std::tuple(std::bit_cast<uint64_t>(p.location.x), std::bit_cast<uint64_t>(p.location.y),
                    std::isnan(p.velocity.x) ? 1 : std::bit_cast<uint64_t>(p.velocity.x),
                    std::bit_cast<uint64_t>(p.velocity.y), std::bit_cast<uint64_t>(p.acceleration.x),
                    std::bit_cast<uint64_t>(p.acceleration.y), std::bit_cast<uint64_t>(p.timestamp),
                    std::bit_cast<uint32_t>(p.azimuthAngle), std::bit_cast<uint32_t>(p.altitudeAngle),
                    std::bit_cast<uint32_t>(p.pressure), std::bit_cast<uint32_t>(p.diameter), p.id);
}

TEST(StrokeJson, AnythingButAStrokesDocumentIsRefusedWithItsCode) {
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
  using Code = ErrorCode;
  for (const auto& [bad, code] : std::vector<std::pair<std::string, Code>>{
           {"", Code::NotJson},
           {"[1, 2]", Code::NotThisFormat},
           {"{\"format\": \"other\"}", Code::NotThisFormat},
           {document("[[" + point + "]]").substr(0, 40), Code::NotJson},
           {document("[[" + point + "]]", R"("format":"scrivlet-strokes","version":2)"), Code::UnsupportedVersion},
           // Our own documents put the version after the strokes: a later version's strokes are not judged.
           {R"({"format":"scrivlet-strokes","strokes":[{"later":true}],"version":2})", Code::UnsupportedVersion},
           {document("{}"), Code::Malformed},
           {document("[[3]]"), Code::Malformed},
           {document("[" + point + "]"), Code::Malformed},
           {document("[[" + noX + "]]"), Code::Malformed},
           {document("[[" + nanY + "]]"), Code::Malformed},
           {document("[[" + std::string(point).replace(point.find(R"("id":1)"), 6, R"("id":-1)") + "]]"), Code::Malformed},
           // Members of the wrong type: refused, never thrown.
           {R"({"format":5,"version":1,"strokes":[]})", Code::NotThisFormat},
           {R"({"format":null,"version":1,"strokes":[]})", Code::NotThisFormat},
           {R"({"format":{"a":[1]},"version":1,"strokes":[]})", Code::NotThisFormat},
           {R"({"format":"scrivlet-strokes","version":"1","strokes":[]})", Code::UnsupportedVersion},
           {R"({"format":"scrivlet-strokes","version":1.0,"strokes":[]})", Code::UnsupportedVersion},
           {R"({"format":"scrivlet-strokes","version":1,"strokes":{"a":1}})", Code::Malformed},
           {R"({"format":"scrivlet-strokes","version":1,"strokes":[null,[true]]})", Code::Malformed},
           {R"({"format":"scrivlet-strokes","version":1,"strokes":[[{"x":[1],"y":{}}]]})", Code::Malformed}}) {
    Error error = strokesFromJson(bad).error();
    EXPECT_EQ(error.code(), code) << bad << ": " << error.message();
    EXPECT_EQ(error.message().find('\n'), std::string::npos) << error.message();
  }
}

TEST(StrokeJson, SizeNestingAndCountsAreBoundedWhileReading) {
  Error error;
  // Nested 200,000 deep in a member the reader does not know: refused at level 33.
  std::string deep = R"({"format":"scrivlet-strokes","version":1,"strokes":[],"x":)" + std::string(200000, '[') +
                     std::string(200000, ']') + "}";
  error = strokesFromJson(deep).error();
  EXPECT_EQ(error.message(), "a strokes document nested deeper than 32 levels");
  // Five million empty strokes (14 MB): refused at the ten-thousand-and-first.
  std::string thousand;
  for (int i = 0; i < 1000; ++i) thousand += ",[]";
  std::string empty = R"({"format":"scrivlet-strokes","version":1,"strokes":[[])";
  for (int i = 0; i < 5000; ++i) empty += thousand;
  empty += "]}";
  error = strokesFromJson(empty).error();
  EXPECT_EQ(error.code(), ErrorCode::TooLarge);
  EXPECT_EQ(error.message(), "more than 10000 strokes");
  // Over 64 MiB: refused by its size before it is read.
  std::string huge = R"({"format":"scrivlet-strokes","version":1,"strokes":[],"pad":")" + std::string(64 << 20, ' ') + "\"}";
  error = strokesFromJson(huge).error();
  EXPECT_EQ(error.code(), ErrorCode::TooLarge);
  EXPECT_EQ(error.message(), "a strokes document of 67108927 bytes: more than the 67108864 bytes of the largest one read");
}

TEST(StrokeJson, TheVersionOneGoldenFileReadsAndIsWrittenAgainByteForByte) {
  const std::string golden = test_support::readText(SCRIVLET_TEST_DATA_DIR "/strokes_v1.json");
  QnStrokeListRef strokes = strokesFromJson(golden).value_or(nullptr);
  ASSERT_TRUE(strokes);
  const double kNaN = std::nan("");
  const QnStroke first = {
      {{40, 60}, {0, 0}, {0, 0}, 1, 0, 1.5707964f, 0, 3.1111114f, 100},
      {{52.5, 61.25}, {0.125, -0.0625}, {12.5, -6.25}, 1.016, 0.5f, 1, 0.25f, 3.5f, 101},
      {{52.5, 61.25}, {kNaN, INFINITY}, {-INFINITY, -0.0}, 1.02, -0.5f, 0.75f, 1, 0, 18446744073709551615u}};
  const QnStroke third = {{{-4.5, 1e-300}, {1e300, 0.1}, {0, 0}, 2.5, 0, 1.5707964f, 0, 2.6666667f, 102}};
  ASSERT_EQ(strokes->size(), 3u);
  ASSERT_EQ(strokes->at(0)->size(), 3u);
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(bits(strokes->at(0)->at(i)), bits(first[i])) << i;
  EXPECT_TRUE(strokes->at(1)->empty());
  ASSERT_EQ(strokes->at(2)->size(), 1u);
  EXPECT_EQ(bits(strokes->at(2)->at(0)), bits(third[0]));
  EXPECT_EQ(strokesToJson(strokes), golden);
  EXPECT_EQ(strokesToJson(nullptr), R"({"format":"scrivlet-strokes","strokes":[],"version":1})");
}

}  // namespace
}  // namespace scrivlet
