// Record files refused when malformed, and read back and written again to the byte. (Strokes drawn
// again into a record: record_renderer_test.cpp.)
#include <scrivlet/record_file.h>
#include <scrivlet/stroke_json.h>

#include <gtest/gtest.h>

#include "output_support.h"

namespace scrivlet {
namespace {

TEST(RecordFile, AnythingButARecordAndMembersOfTheWrongTypeOrOutOfRangeAreRefusedWithAReason) {
  const std::string good = test_support::readText(SCRIVLET_TEST_DATA_DIR "/record_v1.json");
  ASSERT_TRUE(recordFromJson(good));
  auto with = [&good](const std::string& member, const std::string& value) {
    // The record's own version is its last member; the strokes document has one of its own before.
    size_t at = (member == "version" ? good.rfind("\"version\":") : good.find("\"" + member + "\":")) + member.size() + 3;
    size_t end = member == "strokes" ? good.find(",\"timestamp\"") : good.find_first_of(",}", at);
    if (member == "device" || member == "frame") end = good.find_first_of("}]", at) + 1;
    return good.substr(0, at) + value + good.substr(end);
  };
  std::string notBase64 = good;
  notBase64.insert(notBase64.find("\"png\":\"") + 7, "!AAA");
  using Code = ErrorCode;
  for (const auto& [bad, code] : std::vector<std::pair<std::string, Code>>{
           {"[]", Code::NotThisFormat},
           {good.substr(0, good.size() - 2), Code::NotJson},
           {R"({"format":"scrivlet-record","version":2})", Code::UnsupportedVersion},
           {R"({"format":"scrivlet-record","version":1})", Code::Malformed},
           {notBase64, Code::Malformed},
           {with("format", "5"), Code::NotThisFormat},
           {with("format", "null"), Code::NotThisFormat},
           {with("version", "[1]"), Code::UnsupportedVersion},
           {with("hash", "12"), Code::Malformed},
           {with("timestamp", "\"NaN\""), Code::Malformed},
           {with("frame", "[1,2,3]"), Code::Malformed},
           {with("device", R"({"model":"x","screenScale":2,"pixelsPerInch":4294967297})"), Code::Malformed},
           {with("device", R"({"model":"x","screenScale":2,"pixelsPerInch":-1})"), Code::Malformed},
           {with("device", R"({"model":"x","screenScale":2,"pixelsPerInch":264.5})"), Code::Malformed},
           {with("strokes", "[]"), Code::Malformed},
           {with("strokes", R"({"format":"scrivlet-strokes","version":1,"strokes":[[{}]]})"), Code::Malformed},
           // The strokes nested 200,000 deep: 400 KB that used to overflow the stack.
           {with("strokes", R"({"format":"scrivlet-strokes","version":1,"strokes":)" + std::string(200000, '[') +
                                std::string(200000, ']') + "}"),
            Code::Malformed}}) {
    Error error = recordFromJson(bad).error();
    EXPECT_EQ(error.code(), code) << bad.substr(0, 200) << ": " << error.message();
    EXPECT_EQ(error.message().find('\n'), std::string::npos);
  }
  for (const char* density : {"0", "2147483647"}) {  // 0: a density not known
    Result<RecordFile> read = recordFromJson(
        with("device", std::string(R"({"model":"x","screenScale":2,"pixelsPerInch":)") + density + "}"));
    ASSERT_TRUE(read) << read.error().message();
  }
}

TEST(RecordFile, TheVersionOneGoldenFileReadsAndIsWrittenAgainByteForByte) {
  const std::string golden = test_support::readText(SCRIVLET_TEST_DATA_DIR "/record_v1.json");
  Result<RecordFile> read = recordFromJson(golden);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->hash(), "0F1E2D3C4B");
  EXPECT_EQ(read->timestamp(), 786000000.125);
  EXPECT_EQ(read->frame(), makeRect(-4.5, 2, 300, 120));
  EXPECT_EQ(read->device().model(), "iPad13,4");
  EXPECT_EQ(read->device().screenScale(), 2);
  EXPECT_EQ(read->device().pixelsPerInch(), 264);
  // Two pixels, one opaque red and one transparent.
  QnImage image = QnImage::decodePNG(read->png());
  ASSERT_EQ(image.pixelWidth(), 2);
  EXPECT_EQ(test_support::rgbaAt(image, 0, 0), (test_support::Rgba{255, 0, 0, 255}));
  EXPECT_EQ(test_support::rgbaAt(image, 1, 0), (test_support::Rgba{0, 0, 0, 0}));
  // The strokes are those of the strokes golden file, read as such.
  EXPECT_EQ(strokesToJson(read->strokes()), test_support::readText(SCRIVLET_TEST_DATA_DIR "/strokes_v1.json"));
  EXPECT_EQ(recordFileToJson(*read), golden);
}

}  // namespace
}  // namespace scrivlet
